// SPDX-License-Identifier: Apache-2.0
#pragma once

/// From now on, writes the library's trace lines to standard error as they can be shown: a line each, in the
/// form that they have without it, "[module level] text". A value that is traced can neither end the line
/// nor command the terminal.
void ShowTraceLines();

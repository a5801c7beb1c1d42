// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace cm::internal {

/// The sink of trace lines until another is set: writes "[module level] text" to standard error, with one
/// system call so that lines stay whole; one of more than PIPE_BUF bytes in pieces, unless it is a file. A
/// standard error that is closed, or a pipe that nobody reads any more, loses the line and does no harm. One
/// that is full, also because another was first, is waited for, until it has taken nothing for a second; what
/// is left of the line is lost. Until it takes lines again they are lost without a wait, and the first one
/// that it takes comes after a line that says how many were.
///
/// Threads: any.
void WriteToStandardError(void* context, int level, const char* module, const char* text,
                          unsigned int length);

}  // namespace cm::internal

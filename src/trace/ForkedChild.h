// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace kalStore::internal {

/// Whether a thread is exiting, as what the system says of it has it:
/// "id (name) state parent group session terminal foreground flags ...".
bool IsExiting(const char* thread);

/// Whether this process was forked from one while that had other threads. Any
/// lock may be held by one of them, which are not here, and what it protects
/// half changed: at its exit nothing is ended.
bool IsForkedChild();

/// From when on forks are noticed.
void NoticeForks();

}  // namespace kalStore::internal

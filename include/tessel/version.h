// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The version of the headers that a program is compiled with; CHANGELOG.md says what a version promises.
/// @par Example
/// @code{.cpp}
/// #if TESSEL_VERSION_NUMBER >= 10200
///   // What version 1.2.0 added may be used.
/// #endif
/// static_assert(TESSEL_VERSION_NUMBER / 10000 == TESSEL_VERSION_MAJOR);
/// @endcode

/// Changes when programs must be built again.
#define TESSEL_VERSION_MAJOR 1
/// Grows when something is added.
#define TESSEL_VERSION_MINOR 0
/// Grows when something is fixed.
#define TESSEL_VERSION_PATCH 0

/// All three, to be compared: 10203 for version 1.2.3. Each of the last two is below 100.
#define TESSEL_VERSION_NUMBER \
  (TESSEL_VERSION_MAJOR * 10000 + TESSEL_VERSION_MINOR * 100 + TESSEL_VERSION_PATCH)

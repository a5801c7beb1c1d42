// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "util/ConfigData.h"

// For the files beside this one: each compiles as it is, and does not with REFUSED.

/// A value that the caller only reads.
const ConfigData& Value();

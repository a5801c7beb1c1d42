// SPDX-License-Identifier: Apache-2.0
#pragma once

// Marks what libutil.so exports; everything else stays hidden.
#define UTIL_API __attribute__((visibility("default")))

// SPDX-License-Identifier: Apache-2.0
#pragma once

// Marks what libtessel.so exports; everything else stays hidden.
#define TESSEL_API __attribute__((visibility("default")))

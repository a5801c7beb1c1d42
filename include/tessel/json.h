// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The JSON document library: values, arrays and objects, text writer and reader, and the typed reader.

#include "tessel/jsonHelper.h"
#include "tessel/json_array.h"
#include "tessel/json_object.h"
#include "tessel/json_text.h"
#include "tessel/json_value.h"

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tessel/tessel.h"

/// Texts too long for a string to hold without memory of their own.
inline const std::string kLongName = "a configuration name of more than fifteen characters";
inline const std::string kOldText = "the value that was stored before, at some length";
inline const std::string kNewText = "the value that is to be stored now, at some length";

/// The string stored under the name; "" when there is none.
std::string StoredText(kalStore::IKalConfig& store, kalStore::KalConfigGroup group, const std::string& name);

/// The store's count of subscriptions and bindings, as its trace lines say it. Uses the trace sink and one
/// id.
unsigned int TotalObservers(kalStore::IKalConfig& store);

/// Uses every operation of the store from another thread: nobody left a lock held.
void UseFromAnotherThread(kalStore::IKalConfig& store);

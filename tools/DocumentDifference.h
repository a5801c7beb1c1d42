// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "Change.h"
#include "SettingsDocument.h"

/// What changes in a call's store when `second` is imported after `first`. By group, in the order of
/// `second`; names are borrowed from the documents.
std::vector<Change> ChangesInStore(const SettingsDocument& first, const SettingsDocument& second);

/// What differs between the values that the documents give. By group, in the order of `second`; then what
/// `first` alone has, in its order. Names are borrowed from the documents.
std::vector<Change> ExactChanges(const SettingsDocument& first, const SettingsDocument& second);

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>
#include <string>

#include "tessel/settings_check.h"

/// Write a finding on a line of its own. `name` is the document's, "<stdin>" for standard input.
///   text    file:line:column: part: reason, the place in bold where colour is wanted
///   json    an object
///   github  an annotation of the line, as GitHub's workflows take it from a step's output
void PrintFindingAsText(std::ostream& out, const std::string& name, const kalStore::SettingsFinding& finding);
void PrintFindingAsJson(std::ostream& out, const std::string& name, const kalStore::SettingsFinding& finding);
void PrintFindingForGithub(std::ostream& out, const std::string& name,
                           const kalStore::SettingsFinding& finding);

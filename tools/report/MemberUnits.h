// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// The units of the statistics' members, as the page has them in it: per entity and member, without those
/// that are bare numbers.
std::string MemberUnits();

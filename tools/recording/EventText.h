// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "recording/RecordingEvent.h"

/// Writes the event on a line, for people; coloured where that is wanted.
void PrintRecordingEvent(std::ostream& out, const RecordingEvent& event);

/// GROUP/NAME of the event's value as it can be shown, GROUP/* of a whole group.
std::string RecordedPath(const RecordingEvent& event);

/// The number with all its digits, and an exponent where those are too many.
std::string ShortNumber(double number);

/// The file of a path, without its folders.
std::string_view BaseName(std::string_view path);

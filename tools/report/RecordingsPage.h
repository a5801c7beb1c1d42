// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>

#include "OutputFile.h"
#include "recording/RecordingFile.h"

/// Writes the page with the recordings in it. What is wrong with a line is written to standard error, and the
/// line left out. Without a line that can be read, the page stays as it was. Throws CommandError when a
/// recording cannot be read, or the page cannot be written.
/// @return Whether all lines could be read. An end that is cut off is no fault.
bool WriteRecordingsPage(std::span<RecordingFile> recordings, const OutputFile& page);

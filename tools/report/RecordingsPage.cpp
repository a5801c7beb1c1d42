// SPDX-License-Identifier: Apache-2.0
#include "report/RecordingsPage.h"

#include <cstddef>
#include <string>

#include "TextFile.h"
#include "recording/EventText.h"
#include "report/EmbeddedRecording.h"
#include "report/MemberUnits.h"
#include "report/Page.h"

bool WriteRecordingsPage(std::span<RecordingFile> recordings, const OutputFile& page) {
  std::string text = std::string(PageBegin()) + MemberUnits();
  bool isFine = true, isEmpty = true;
  for (std::size_t i = 0; i < recordings.size(); ++i) {
    EmbeddedRecording embedded(text, i, std::string(BaseName(FileName(recordings[i].Name()))));
    const bool isWhole = recordings[i].Read([&](const RecordingEvent& event, const std::string&) {
      embedded.Add(event);
      isEmpty = false;
    });
    isFine = isFine && isWhole;
  }
  if (isEmpty && !isFine) return false;
  text += PageEnd();
  page.Write(text);
  return isFine;
}

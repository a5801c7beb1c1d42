// SPDX-License-Identifier: Apache-2.0
// A program outside the project that records what it does, in the file that it is given.
#include <tessel/record.h>
#include <tessel/tessel.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  kalStore::Recording recording(argv[1]);
  kalStore::KalConfigHelper settings(7);
  settings.SetKalConfig("Bitrate", ConfigData(32000), kalStore::KAL_CONFIG_GROUP_AUDIO);
  if (recording.Flush() != kalStore::kResultOk) return 2;
  std::FILE* const file = std::fopen(argv[1], "r");
  if (file == nullptr) return 3;
  return std::fgetc(file) == '{' ? 0 : 4;
}

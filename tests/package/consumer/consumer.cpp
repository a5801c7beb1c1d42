// SPDX-License-Identifier: Apache-2.0
// A program outside the project: uses both installed libraries, and reads a value through each layer.
#include <tessel/tessel.h>
#include <util/util.h>

#include <cstdio>
#include <cstring>

#ifdef CONSUMER_IS_NEWER
static_assert(__cplusplus > 202002L, "the package has chosen an older language");
#endif

int main() {
#ifdef PACKAGE_VERSION
  char version[32];
  std::snprintf(version, sizeof version, "%d.%d.%d", TESSEL_VERSION_MAJOR, TESSEL_VERSION_MINOR,
                TESSEL_VERSION_PATCH);
  if (std::strcmp(version, PACKAGE_VERSION) != 0) return 6;
#endif
  kalStore::KalConfigHelper settings(7);
  if (settings.SetKalConfig("Bitrate", ConfigData(32000), kalStore::KAL_CONFIG_GROUP_AUDIO) !=
      kalStore::kResultNobody) {
    return 1;
  }
  const char* document = settings.DumpKalConfigs(1U << kalStore::KAL_CONFIG_GROUP_AUDIO);
  if (document == nullptr || std::strstr(document, "32000") == nullptr) return 2;

  void* entity = nullptr;
  if (createTesselEntity(static_cast<kalStore::KalTesselEntityType>(1), 7, &entity) != 0) return 3;
  if (releaseTesselEntity(static_cast<kalStore::KalTesselEntityType>(1), 7, entity) != 0) return 4;

  timer_fact<timer_policy> meter;
  return meter.overtime(0) ? 0 : 5;
}

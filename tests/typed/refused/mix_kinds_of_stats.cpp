#include "Use.h"

void Use() {
#ifdef REFUSED
  StatsRef<ContentAudio> other = std::move(audio);
#else
  StatsRef<Audio> other = std::move(audio);
#endif
}

// SPDX-License-Identifier: Apache-2.0
#include "simulate/Link.h"

#include <algorithm>
#include <cmath>

namespace simulate {

namespace {

constexpr double kBestCapacity = 3e6;
constexpr double kWorstShare = 0.1;
constexpr double kQueueSeconds = 0.4;
constexpr double kPathDelayMs = 18;

double Smooth(double share) {
  share = std::clamp(share, 0.0, 1.0);
  return share * share * (3 - 2 * share);
}

}  // namespace

void Link::Send(Media media, RunTime now, std::uint32_t packets, double bits) {
  if (packets == 0) return;
  const kalStore::detail::Lock lock(m_mutex);
  advance(now);
  const double room = std::max(0.0, kQueueSeconds * m_state.capacity - m_queuedBits);
  const double overflow = bits > room ? (bits - room) / bits : 0;
  const double atRandom = 0.004 + 0.04 * (1 - quality(now)) * random();
  const double share = overflow + (1 - overflow) * atRandom;
  const auto index = static_cast<std::size_t>(media);
  m_lossRemainder[index] += share * packets;
  const double lost = std::min<double>(std::floor(m_lossRemainder[index]), packets);
  m_lossRemainder[index] -= lost;
  const double arriving = bits * (1 - lost / packets);
  m_queuedBits += arriving;
  m_traffic[index].lost += static_cast<std::uint32_t>(lost);
  m_traffic[index].received += packets - static_cast<std::uint32_t>(lost);
  m_traffic[index].bits += arriving;
  m_state.loss += (share - m_state.loss) * 0.1;
}

Link::Traffic Link::Received(Media media) const {
  const kalStore::detail::Lock lock(m_mutex);
  return m_traffic[static_cast<std::size_t>(media)];
}

Link::State Link::Now(RunTime now) {
  const kalStore::detail::Lock lock(m_mutex);
  advance(now);
  return m_state;
}

// Good for two fifths of the cycle, then worse, bad for a while, and better.
double Link::quality(RunTime now) const {
  const double place = std::fmod(Seconds(now) / m_cycleSeconds + m_phase, 1.0);
  return 1 - Smooth((place - 0.4) / 0.1) + Smooth((place - 0.7) / 0.2);
}

void Link::advance(RunTime now) {
  const double elapsed = Seconds(now - m_time);
  if (elapsed <= 0) return;
  m_time = now;
  const double good = quality(now);
  const double wobble = 1 + 0.03 * std::sin(40 * Seconds(now) / m_cycleSeconds);
  m_state.capacity = kBestCapacity * (kWorstShare + (1 - kWorstShare) * good) * wobble;
  m_queuedBits = std::max(0.0, m_queuedBits - m_state.capacity * elapsed);
  const double delayMs =
      kPathDelayMs + 1000 * m_queuedBits / m_state.capacity + (1 + 14 * (1 - good)) * random();
  m_state.jitterMs += (std::abs(delayMs - m_state.delayMs) - m_state.jitterMs) / 16;
  m_state.delayMs = delayMs;
}

// xorshift32, 0 to 1.
double Link::random() {
  m_randomState ^= m_randomState << 13;
  m_randomState ^= m_randomState >> 17;
  m_randomState ^= m_randomState << 5;
  return m_randomState * 0x1p-32;
}

}  // namespace simulate

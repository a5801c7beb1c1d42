// SPDX-License-Identifier: Apache-2.0
#include "checker/Choices.h"

#include <cstdio>
#include <cstdlib>

namespace model {

namespace {

constexpr int kUnlimited = 1 << 30;

}  // namespace

void Choices::Search(Limits limits) {
  m_mode = Mode::kSearch;
  m_limits = limits;
  m_path.clear();
  m_states.clear();
}

void Choices::Random(std::uint64_t seed) {
  m_mode = Mode::kRandom;
  m_limits = {kUnlimited, kUnlimited};
  m_random.seed(static_cast<std::minstd_rand::result_type>(seed * 2654435761U + 1));
}

void Choices::Replay(std::string_view schedule) {
  m_mode = Mode::kReplay;
  m_limits = {kUnlimited, kUnlimited};
  m_replayed.clear();
  const std::string text(schedule);
  unsigned int operation = 0;
  char kind = 0;
  int value = 0;
  int size = 0;
  for (const char* at = text.c_str(); std::sscanf(at, "%u%c%d%n", &operation, &kind, &value, &size) == 3;
       at += size) {
    m_replayed.push_back({operation, static_cast<Kind>(kind), value});
    if (at[size] == '.') ++size;
  }
}

void Choices::BeginExecution() {
  m_left = m_limits;
  m_operation = 0;
  m_isKnown = false;
  m_decision = 0;
  m_unusual.clear();
  m_depth = 0;
}

bool Choices::HasNext() {
  while (!m_path.empty() && ++m_path.back().at == m_path.back().options.Size()) m_path.pop_back();
  return !m_path.empty();
}

int Choices::Choose(Kind kind, Cost cost, const Options& options) {
  if (options.Size() < 2 || m_isKnown || !Affords(cost)) return options[0];
  const std::size_t at = decide(kind, cost, options);
  if (at == 0) return options[0];
  if (cost != Cost::kFree) Spend(cost);
  m_unusual.push_back({m_operation, kind, options[at]});
  if (kind != Kind::kPreemption && kind != Kind::kNext) m_decision = m_decision * Options::kMost + at;
  return options[at];
}

std::size_t Choices::decide(Kind kind, Cost cost, const Options& options) {
  switch (m_mode) {
    case Mode::kSearch:
      if (m_depth == m_path.size()) m_path.push_back({m_operation, kind, options, 0});
      if (m_path[m_depth].operation != m_operation || m_path[m_depth].kind != kind ||
          m_path[m_depth].options.Size() != options.Size()) {
        std::fputs("model: the scenario runs differently under one schedule\n", stderr);
        std::abort();
      }
      return m_path[m_depth++].at;
    case Mode::kRandom: {
      // Rarely where it costs: an order that is broken too often shows less.
      constexpr unsigned int kOneOf[] = {1, 6, 4};
      if (m_random() % kOneOf[static_cast<std::size_t>(cost)] != 0) return 0;
      return m_random() % options.Size();
    }
    case Mode::kReplay:
      for (const Decision& decision : m_replayed) {
        if (decision.operation != m_operation || decision.kind != kind) continue;
        for (std::size_t at = 0; at < options.Size(); ++at) {
          if (options[at] == decision.value) return at;
        }
      }
      return 0;
  }
  return 0;
}

void Choices::BeAt(std::uint64_t state) {
  const auto [visit, isFirst] = m_states.try_emplace(state, m_left);
  Limits& then = visit->second;
  m_isKnown = !isFirst && then.preemptions >= m_left.preemptions && then.oddities >= m_left.oddities;
  if (!m_isKnown) then = m_left;
}

std::string Choices::Schedule() const {
  std::string schedule;
  for (const Decision& decision : m_unusual) {
    if (!schedule.empty()) schedule += '.';
    schedule += std::to_string(decision.operation) + static_cast<char>(decision.kind) +
                std::to_string(decision.value);
  }
  return schedule;
}

}  // namespace model

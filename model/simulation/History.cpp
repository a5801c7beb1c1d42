// SPDX-License-Identifier: Apache-2.0
#include "simulation/History.h"

#include <cstdio>
#include <map>

namespace simulation {

namespace {

std::string Shown(const fuzz::Text& text) {
  return text ? '"' + *text + '"' : "nothing";
}

std::string Ended(const Done& done) {
  std::string text = "thread " + std::to_string(done.thread) + " has done: " + Describe(done.action);
  if (done.outcome == Done::Outcome::kOutOfMemory) return text + ": out of memory";
  if (done.outcome == Done::Outcome::kCallbackThrew) return text + ": a callback threw";
  char result[32];
  std::snprintf(result, sizeof result, ": %#llx", static_cast<unsigned long long>(done.result));
  text += result;
  return done.value ? text + ", " + Shown(done.value) : text;
}

}  // namespace

std::string Describe(const History& history) {
  std::map<Moment, std::string> lines;
  for (const Done& done : history.done) {
    lines[done.begin] = "thread " + std::to_string(done.thread) + " begins: " + Describe(done.action);
    if (done.end != kNever) lines[done.end] = Ended(done);
  }
  for (const auto& [at, notification] : history.deliveries) {
    lines[at] = "  #" + std::to_string(notification.tag) + " is called: " + notification.name + " " +
                Shown(notification.oldValue) + " -> " + Shown(notification.newValue);
  }
  for (const auto& [at, event] : history.fired) lines[at] = "  event #" + std::to_string(event) + " fires";
  std::string text;
  for (const auto& [at, line] : lines) text += line + '\n';
  for (const Journalled& entry : history.journal) {
    text += "journal: " + entry.name + " " + Shown(entry.oldValue) + " -> " + Shown(entry.newValue) + '\n';
  }
  return text;
}

}  // namespace simulation

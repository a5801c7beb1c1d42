// SPDX-License-Identifier: Apache-2.0
import { Series } from "./series.js";
import { Subscriber, isLate } from "./subscriber.js";

const MAX_FINDINGS = 1000; // Of each kind; all are counted.

/** What a recording says, as the page asks for it. */
export class Recording {
  calls = new Map(); // Per id {id, from, to, subscribers: Map per id}.
  /**
   * Sets, removals and imports in the order of their times; where parts begin, calls end or come again, and events were
   * lost, too.
   */
  changes = [];
  /** Per number of a set, how many heard of it, and how long the slowest took. */
  heard = new Map();
  statistics = new Map(); // Per "call/entity" {call, entity, members: Map of Series}.
  bindings = new Map(); // Per "call/group/name", the one that answers now.
  faults = []; // {line, reason}
  findings = { lost: new Found(), dropped: new Found(), late: new Found(), threw: new Found(), refused: new Found() };
  wall = "";
  end = 0;
  count = 0;
  ended = undefined;

  constructor(name) {
    this.name = name;
  }

  /** Whether nothing more comes: a full file has a next one. */
  get isOver() {
    return this.ended !== undefined && this.ended !== "goes on in the next file";
  }

  /** An event that has no fault; it may be another one afterwards. */
  take(event) {
    this.count += 1;
    if (event.t > this.end) this.end = event.t;
    if (!Object.hasOwn(TAKE, event.type)) return;
    if (event.call !== undefined) this.#callOf(event.call, event.t);
    TAKE[event.type](this, event);
  }

  /** The statistics members of a call that are kept under a name, as "video/call.encoderFps". */
  seriesOf(call, key) {
    const slash = key.indexOf("/");
    return this.statistics.get(`${call}/${key.slice(0, slash)}`)?.members.get(key.slice(slash + 1));
  }

  insertChange(event) {
    const { changes } = this;
    let index = changes.length;
    while (index > 0 && changes[index - 1].t > event.t) index -= 1;
    if (index === changes.length) changes.push({ ...event });
    else changes.splice(index, 0, { ...event });
  }

  /** Those of all calls. */
  get subscribers() {
    return [...this.calls.values()].flatMap((call) => [...call.subscribers.values()]);
  }

  subscriberOf(event, kind) {
    const { subscribers } = this.calls.get(event.call);
    let subscriber = subscribers.get(event.id);
    if (!subscriber) {
      subscriber = new Subscriber(event.call, event.id, kind);
      subscribers.set(event.id, subscriber);
    }
    return subscriber;
  }

  #callOf(id, time) {
    let call = this.calls.get(id);
    if (!call) {
      call = { id, from: time, to: undefined, subscribers: new Map() };
      this.calls.set(id, call);
    }
    return call;
  }
}

/** Findings of a kind: how many there are, and the first of them. */
class Found {
  count = 0;
  events = [];

  add(event, count = 1) {
    this.count += count;
    if (this.events.length < MAX_FINDINGS) this.events.push({ ...event });
  }
}

const TAKE = {
  recording(recording, event) {
    if (event.event === undefined) {
      if (!recording.wall) recording.wall = event.wall ?? "";
      recording.ended = undefined;
      recording.changes.push({ type: "begin", t: event.t });
    } else {
      recording.ended = event.reason ?? "";
    }
  },
  call(recording, event) {
    const call = recording.calls.get(event.call);
    const { t } = event;
    if (event.event === "ended") {
      call.to = t;
      recording.insertChange({ type: "end", t, call: event.call });
    } else if (call.to !== undefined) {
      // Behind the end, also where the times of two threads say something else.
      recording.insertChange({ type: "again", t: Math.max(t, call.to), call: event.call });
      call.to = undefined;
    }
  },
  set(recording, event) {
    recording.insertChange(event);
    if (event.result === "refused") recording.findings.refused.add(event);
  },
  remove(recording, event) {
    recording.insertChange(event);
  },
  apply(recording, event) {
    recording.insertChange(event);
    if (event.result === "refused") recording.findings.refused.add(event);
    if (event.threw !== undefined) recording.findings.threw.add(event);
  },
  subscribe(recording, event) {
    const subscriber = recording.subscriberOf(event, "subscription");
    Object.assign(subscriber, { group: event.group, name: event.name });
  },
  unsubscribe(recording, event) {
    recording.subscriberOf(event, "subscription").endedAt = event.t;
  },
  bind(recording, event) {
    if (event.event === "asked") {
      const asked = recording.bindings.get(nameOf(event));
      if (asked) takeDelivery(recording, event, asked);
      return;
    }
    const subscriber = recording.subscriberOf(event, "binding");
    Object.assign(subscriber, { group: event.group, name: event.name });
    recording.bindings.set(nameOf(event), subscriber);
  },
  deliver(recording, event) {
    takeDelivery(recording, event, recording.subscriberOf(event, "subscription"));
    if (event.cause !== undefined) addHeard(recording.heard, event);
  },
  statistics(recording, event) {
    const { call, entity, t, members } = event;
    const key = `${call}/${entity}`;
    let object = recording.statistics.get(key);
    if (event.event === "ended" && object) {
      for (const series of object.members.values()) series.end(t);
      object.from = undefined;
    }
    if (members === undefined) return;
    if (!object) {
      object = { call, entity, members: new Map(), from: undefined };
      recording.statistics.set(key, object);
    }
    // A first line, and a picture, has all members that are not 0 and not "".
    const isWhole = object.from === undefined || event.picture === true;
    object.from ??= t;
    for (const [name, series] of object.members) {
      if (isWhole && !Object.hasOwn(members, name)) series.push(t, series.texts ? "" : 0);
    }
    for (const name of Object.keys(members)) takeMember(object, name, members[name], t, isWhole);
  },
  lost(recording, event) {
    recording.findings.lost.add(event, event.count);
    recording.insertChange({ type: "lost", t: event.t });
  },
};

function nameOf({ call, group, name }) {
  return `${call}/${group}/${name}`;
}

function takeMember(object, name, value, time, isWhole) {
  if (typeof value !== "number" && typeof value !== "string") return;
  let series = object.members.get(name);
  if (!series) {
    series = new Series();
    object.members.set(name, series);
    if (!isWhole) series.push(object.from, typeof value === "number" ? 0 : "");
  }
  series.push(time, value);
}

function takeDelivery(recording, event, subscriber) {
  const { findings } = recording;
  subscriber.take(event);
  if (event.dropped) findings.dropped.add(event);
  if (isLate(event)) findings.late.add(event);
  if (event.threw !== undefined) findings.threw.add(event);
}

function addHeard(heard, event) {
  let sum = heard.get(event.cause);
  if (!sum) {
    sum = { count: 0, wait: 0, run: 0, threw: 0, dropped: 0 };
    heard.set(event.cause, sum);
  }
  if (event.dropped) sum.dropped += 1;
  else sum.count += 1;
  if (event.threw !== undefined) sum.threw += 1;
  if (event.wait_us > sum.wait) sum.wait = event.wait_us;
  if (event.run_us > sum.run) sum.run = event.run_us;
}

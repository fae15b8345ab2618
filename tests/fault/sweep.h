// Runs operations of the interfaces with each of their allocations failing in turn, and judges what comes of it.
#ifndef KVXDM_TESTS_FAULT_SWEEP_H
#define KVXDM_TESTS_FAULT_SWEEP_H

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "process_faults.h"
#include "subject.h"

/** What an operation gave back. */
struct Outcome {
  bool succeeded = false;
  KvbString result;
  KvbString error;
};

using Act = std::function<void(Outcome*)>;

struct Operation {
  std::string name;
  std::vector<Kind> kinds;
  /** Makes all that the call needs; the call itself asks for nothing but what the library asks for. */
  std::function<Act(XDMMain*)> prepare;
  /** The texts that a failure for want of memory may have, besides none at all. */
  std::set<std::string> texts = {};
  /** Whether a failure leaves no trace. Where it may, what was there before and what is new can be read. */
  bool undoesFailures = true;
  /** Whether a failure has a text whenever there is memory for one. */
  bool namesFailures = true;
  /** Looks at what lies outside the model. */
  std::function<void(bool succeeded)> checkOutside = [](bool) {};
};

/** What a sweep has met. */
struct Findings {
  long points = 0;            // allocations that were made to fail
  long attemptsInXerces = 0;  // attempts in which Xerces-C was refused memory
  long bytesLeftByXerces = 0;
  std::set<std::string> texts;
};

class Sweep {
 public:
  Sweep(const Operation& operation, Kind kind) : operation_(operation), kind_(kind) {
    text_.reserve(longestText);
    // So that the events are rendered too.
    kvlogSetSink([](const KvLogEvent&, void*) {}, nullptr, 0);
    // The first runs make what lives as long as the process.
    for (int i = 0; i < 3; ++i) expected_ = attempt(0, ProcessFaults::Extent::once);
  }

  Findings run() {
    findings_.points = sweepAllocationFaults(
        [this](long nth, ProcessFaults::Extent extent) { return attemptAndAccount(nth, extent); });
    return findings_;
  }

 private:
  static constexpr std::size_t longestText = 4000;

  struct Attempt {
    Outcome outcome;
    std::string before;
    std::string after;
    bool met = false;
    bool metInXerces = false;
  };

  /** Whether a failure was met. */
  bool attemptAndAccount(long nth, ProcessFaults::Extent extent) {
    bool met, metInXerces;
    text_.clear();
    const long before = liveBytes();
    {
      const Attempt done = attempt(nth, extent);
      judge(done, extent);
      met = done.met;
      metInXerces = done.metInXerces;
    }
    account(liveBytes() - before, metInXerces);
    if (!text_.empty()) findings_.texts.insert(text_);
    return met;
  }

  Attempt attempt(long nth, ProcessFaults::Extent extent) const {
    Attempt done;
    Subject subject(kind_);
    done.before = contentsOf(subject.main());
    const Act act = operation_.prepare(subject.main());
    runWithFaults(act, nth, extent, &done);
    operation_.checkOutside(done.outcome.succeeded);
    done.after = contentsOf(subject.main());
    return done;
  }

  static void runWithFaults(const Act& act, long nth, ProcessFaults::Extent extent, Attempt* done) {
    ProcessFaults faults(nth, extent);
    try {
      act(&done->outcome);
    } catch (...) {
      ADD_FAILURE() << "an exception left the interface";
    }
    done->met = faults.met();
    done->metInXerces = faults.metInXerces();
  }

  void account(long left, bool metInXerces) {
    if (metInXerces) {
      ++findings_.attemptsInXerces;
      findings_.bytesLeftByXerces += left;
    } else {
      EXPECT_EQ(left, 0);
    }
  }

  void judge(const Attempt& done, ProcessFaults::Extent extent) {
    if (done.outcome.succeeded) {
      expectWholeResult(done);
    } else {
      expectFailure(done, extent);
    }
  }

  void expectWholeResult(const Attempt& done) const {
    EXPECT_TRUE(expected_.outcome.succeeded);
    EXPECT_EQ(str(done.outcome.result), str(expected_.outcome.result));
    EXPECT_EQ(str(done.outcome.error), "");
    EXPECT_EQ(done.after, expected_.after);
  }

  void expectFailure(const Attempt& done, ProcessFaults::Extent extent) {
    const std::string text = str(done.outcome.error);
    const bool isUsual = !expected_.outcome.succeeded && text == str(expected_.outcome.error);
    EXPECT_TRUE(done.met || isUsual);
    EXPECT_EQ(str(done.outcome.result), "");
    if (operation_.undoesFailures) {
      EXPECT_EQ(done.after, done.before);
    }
    EXPECT_TRUE(text.empty() || isUsual || operation_.texts.count(text) != 0) << text;
    // After one failure there is memory for the text again, unless the text is all that was asked for.
    const bool mustSpeak = expected_.outcome.succeeded && operation_.namesFailures && !operation_.texts.empty();
    if (mustSpeak && extent == ProcessFaults::Extent::once) {
      EXPECT_NE(text, "");
    }
    if (!isUsual) text_ = text;
  }

  const Operation& operation_;
  const Kind kind_;
  std::string text_;  // of the attempt; holds its memory throughout
  Attempt expected_;
  Findings findings_;
};

// Tests by operation and kind of model

struct Case {
  const Operation* operation;
  Kind kind;
};

inline void PrintTo(const Case& one, std::ostream* out) { *out << one.operation->name << " " << nameOf(one.kind); }

inline std::vector<Case> casesOf(const std::vector<Operation>& operations) {
  std::vector<Case> cases;
  for (const Operation& operation : operations) {
    for (Kind kind : operation.kinds) cases.push_back({&operation, kind});
  }
  return cases;
}

inline std::string nameOf(const testing::TestParamInfo<Case>& info) {
  return info.param.operation->name + "_" + nameOf(info.param.kind);
}

inline bool isSame(const KvbString& one, const KvbString& other) {
  return one.isNull() == other.isNull() && one.compare(other, true) == 0;
}
template <class Value>
bool isSame(Value one, Value other) {
  return one == other;
}

/** A getter of what `select` finds in a model. It needs no memory, so it answers rightly whatever fails. */
template <class Select, class Get>
Operation getter(const std::string& name, const std::vector<Kind>& kinds, Select select, Get get) {
  return {name, kinds, [select, get](XDMMain* main) -> Act {
            auto* object = select(main);
            auto expected = get(object);
            return [object, get, expected](Outcome* outcome) { outcome->succeeded = isSame(get(object), expected); };
          }};
}

/** A setter without a result; it needs no memory either. */
template <class Select, class Set>
Operation setter(const std::string& name, const std::vector<Kind>& kinds, Select select, Set set) {
  return {name, kinds, [select, set](XDMMain* main) -> Act {
            auto* object = select(main);
            return [object, set](Outcome* outcome) {
              set(object);
              outcome->succeeded = true;
            };
          }};
}

#endif

// What a benchmark consists of: named workloads, each with its floor.
#ifndef KVXDM_BENCH_CASE_H
#define KVXDM_BENCH_CASE_H

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <kvxdm/kvxdm.h>

/** One workload at one size. */
struct Case {
  long items;
  std::function<void()> work;
  std::function<void()> floor;            // the least that any program would do with the same bytes
  std::function<void()> prepare = [] {};  // goes before each `work`, unmeasured
};

/** Processor time of the thread; elapsed time where several threads work. */
enum class Clock { thread, wall };

struct Workload {
  std::string name;
  std::string meaning;
  double reach;  // the most times the floor that is aimed at; 0 where this is only compared with
  std::vector<long> sizes;
  std::function<Case(long size)> at;
  Clock clock = Clock::thread;
};

using Workloads = std::vector<Workload>;

void addLoading(Workloads* workloads);
void addSaving(Workloads* workloads);
void addImports(Workloads* workloads);
void addQueries(Workloads* workloads);
void addWalks(Workloads* workloads);
void addColumns(Workloads* workloads);
void addThreads(Workloads* workloads);
void addParsers(Workloads* workloads);

/** All of them, in the order of the table. */
inline Workloads allWorkloads() {
  Workloads workloads;
  for (auto add : {addLoading, addSaving, addImports, addQueries, addWalks, addColumns, addThreads, addParsers}) {
    add(&workloads);
  }
  return workloads;
}

/** A benchmark of something that fails says nothing. */
inline void require(bool succeeded, const KvbString& error) {
  if (!succeeded) throw std::runtime_error(error.asCstr());
}

inline std::atomic<long> kept;

/** Uses `value`, so that what led to it is not optimised away. */
inline void keep(long value) { kept.store(value, std::memory_order_relaxed); }

#endif

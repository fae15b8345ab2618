// Tests that reading gets on with hosts that use Xerces-C themselves, with threads and with exhausted memory:
// kvdom_reader.cpp. Each test runs in a child process, where Xerces-C has not begun yet.
#include <gtest/gtest.h>
#include <kvxdom/kvdom.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/SAXParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "allocation_faults.h"

namespace {

using xercesc::XMLPlatformUtils;

constexpr std::string_view xml = "<!DOCTYPE a [<!ATTLIST a x CDATA 'd'>]><a y='1'>text<b/></a>";

/** The exit status of `action` in a child process; -1 when a signal ended it. */
template <class Action>
int statusOf(Action action) {
  pid_t child = fork();
  if (child == 0) action();
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/** Whether `check` holds in a child process. */
template <class Check>
bool inChild(Check check) {
  return statusOf([&] { _exit(check() ? 0 : 1); }) == 0;
}

bool loads() {
  KvDom document;
  if (!document.loadXML(KvbString(xml.data(), static_cast<unsigned>(xml.size())))) return false;
  return document.getRoot().getValue(false).compare("text", true) == 0;
}

bool hostParses() {
  xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(), "host");
  xercesc::SAXParser parser;
  parser.parse(source);
  return parser.getErrorCount() == 0;
}

TEST(KvDomXercesHost, AHostMayBeginFirstAndEndLast) {
  EXPECT_TRUE(inChild([] {
    XMLPlatformUtils::Initialize();
    bool works = hostParses() && loads() && hostParses();
    XMLPlatformUtils::Terminate();
    return works;
  }));
}

TEST(KvDomXercesHost, AHostMayEndBeforeReadingBegins) {
  EXPECT_TRUE(inChild([] {
    XMLPlatformUtils::Initialize();
    bool works = hostParses();
    XMLPlatformUtils::Terminate();
    return works && loads();
  }));
}

TEST(KvDomXercesHost, AHostMayBeginAndEndBetweenReadings) {
  EXPECT_TRUE(inChild([] {
    bool works = loads();
    for (int i = 0; i < 3; ++i) {
      XMLPlatformUtils::Initialize();
      works = works && hostParses();
      XMLPlatformUtils::Terminate();
      works = works && loads();
    }
    return works;
  }));
}

TEST(KvDomXercesHost, EightThreadsMayReadForTheFirstTimeAtOnce) {
  EXPECT_TRUE(inChild([] {
    std::array<bool, 8> works = {};
    std::array<std::thread, 8> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) {
      threads[i] = std::thread([&works, i] {
        works[i] = true;
        for (int n = 0; n < 50; ++n) works[i] = loads() && works[i];
      });
    }
    for (std::thread& thread : threads) thread.join();
    return works == std::array<bool, 8>{true, true, true, true, true, true, true, true};
  }));
}

TEST(KvDomXercesHost, AProcessThatHasReadEndsInOrder) {
  EXPECT_EQ(statusOf([] { std::exit(loads() ? 0 : 1); }), 0);
}

TEST(KvDomXercesHost, BuildingAndWritingNeedNoXerces) {
  EXPECT_TRUE(inChild([] {
    KvDom document;
    bool works = document.startNewDocument(KvbString("a", true)) &&
                 !document.createXML(true, document.getRoot()).isNull() && !XMLPlatformUtils::fgMemoryManager;
    return works && loads() && XMLPlatformUtils::fgMemoryManager;
  }));
}

TEST(KvDomXercesHost, WithoutMemoryToBeginReadingFailsAndIsTriedAgain) {
  EXPECT_TRUE(inChild([] {
    KvbString document(xml.data(), static_cast<unsigned>(xml.size()));
    KvDom first;
    bool refused = false;
    {
      AllocationFaults faults(1, AllocationFaults::Extent::fromThenOn);
      refused = !first.loadXML(document);
    }
    return refused && loads();
  }));
}

TEST(KvDomXercesHost, ABeginningThatFailsHalfWayMakesEveryReadingFail) {
  for (long nth : {2, 3, 5, 10, 30, 100, 300, 1'000, 2'000, 3'000}) {
    EXPECT_TRUE(inChild([nth] {
      KvbString document(xml.data(), static_cast<unsigned>(xml.size()));
      KvDom first;
      bool refused = false;
      {
        AllocationFaults faults(nth, AllocationFaults::Extent::once);
        refused = !first.loadXML(document);
      }
      return refused && !loads();
    })) << nth;
  }
}

/** 0: refused at that allocation, and the next reading works. 1: it was not met any more. 2: anything else. */
int readWithFault(long nth, AllocationFaults::Extent extent) {
  KvbString document(xml.data(), static_cast<unsigned>(xml.size()));
  if (!loads()) return 2;
  KvDom first;
  bool loaded, met;
  {
    AllocationFaults faults(nth, extent);
    loaded = first.loadXML(document);
    met = faults.met();
  }
  if (loaded == met || !loads()) return 2;
  return met ? 0 : 1;
}

TEST(KvDomXercesHost, EveryFailedAllocationOfAReadingIsAFailureAndNothingMore) {
  for (auto extent : {AllocationFaults::Extent::once, AllocationFaults::Extent::fromThenOn}) {
    long nth = 1;
    int outcome;
    while ((outcome = statusOf([&] { _exit(readWithFault(nth, extent)); })) == 0) ++nth;
    EXPECT_EQ(outcome, 1) << nth;
    EXPECT_GT(nth, 100);
  }
}

}  // namespace

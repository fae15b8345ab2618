// Tests the factory, the life of the main object and the build information, as a host sees them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kvxbase/kvboptions.h>
#include <kvxdm/kvxdm.h>
#include <kvxlog/kvlogger.h>

#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "allocation_faults.h"
#include "texts.h"

namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

class Factory : public ::testing::Test {
 protected:
  Factory() {
    unsetenv("KVX_OPTIONS");
    kvbClearConfigOptions();
  }
  ~Factory() override { kvbClearConfigOptions(); }

  static std::string collectionVariable(unsigned flags) {
    return str(XDMMainPtr(kvxdmCreateMain(flags))->getCollectionVariableName());
  }
};

void remember(const KvLogEvent& event, void* texts) {
  static_cast<std::vector<std::string>*>(texts)->push_back(event.text);
}

TEST_F(Factory, MakesAnEmptyModel) {
  XDMMainPtr main(kvxdmCreateMain(0));
  EXPECT_EQ(main->getRootNode(), nullptr);
  EXPECT_EQ(main->getSelectedColumns(), 0);
  EXPECT_EQ(main->getSelectedColumn(0), nullptr);
}

TEST_F(Factory, MakesAnObjectOfItsOwnAtEveryCall) {
  XDMMainPtr first(kvxdmCreateMain(0)), second(kvxdmCreateMain(0));
  EXPECT_NE(first, second);
}

TEST_F(Factory, WithoutTheFlagNamesNoCollectionVariable) {
  for (unsigned flags : {0u, 1u, 0x40000000u, 0x20000000u, 0x7fffffffu}) EXPECT_EQ(collectionVariable(flags), "");
}

TEST_F(Factory, WithTheFlagNamesACollectionVariableOfItsOwn) {
  std::string first = collectionVariable(0x80000000u), second = collectionVariable(0xffffffffu);
  EXPECT_THAT(first, StartsWith("KV_"));
  EXPECT_THAT(second, StartsWith("KV_"));
  EXPECT_NE(first, second);
}

TEST_F(Factory, InBenchModeNamesTheSameCollectionVariableAlways) {
  kvbSetConfigOption(kv("Bench"), kv(""));
  EXPECT_EQ(collectionVariable(0x80000000u), "KV_BENCH");
  EXPECT_EQ(collectionVariable(0x80000000u), "KV_BENCH");
  EXPECT_EQ(collectionVariable(0), "");
}

TEST_F(Factory, LetsExhaustedMemoryOut) {
  AllocationFaults faults(1, AllocationFaults::Extent::once);
  EXPECT_THROW(kvxdmCreateMain(0), std::bad_alloc);
}

TEST_F(Factory, ReleaseEndsTheObject) {
  std::vector<std::string> events;
  XDMMain* main = kvxdmCreateMain(0);
  kvlogSetSink(&remember, &events, 0);
  main->release();
  kvlogSetSink(nullptr, nullptr, 0);
  EXPECT_THAT(events, ElementsAre("XDMMain instance is being destroyed"));
}

TEST_F(Factory, AnOwnerReleasesItsObjectAndLeavesNullAlone) {
  std::vector<std::string> events;
  kvlogSetSink(&remember, &events, 0);
  {
    XDMMainPtr none;
    XDMMainPtr main(kvxdmCreateMain(0));
  }
  XDMMainRelease()(nullptr);
  kvlogSetSink(nullptr, nullptr, 0);
  EXPECT_EQ(events.size(), 1u);
}

TEST(BuildInformation, TellsVersionAndBuild) {
  EXPECT_EQ(kvx_build_number, 28);
  EXPECT_STREQ(kvx_build_version, "1.6");
  EXPECT_STREQ(kvx_build_info, "XML Data Model version 1.6 (build 28)");
}

}  // namespace

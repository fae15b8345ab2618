// Tests kvxdm.cpp: the life of the main object, its small accessors, its log events and the element that decides the
// row.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kvxbase/kvboptions.h>
#include <kvxlog/kvlogger.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "model.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr unsigned collectionFlag = 0x80000000u;
const char* const destroyed = "XDMMain instance is being destroyed";

struct Event {
  int level;
  std::string sourceUnit;
  std::string text;

  bool operator==(const Event&) const = default;
};

[[maybe_unused]] std::ostream& operator<<(std::ostream& out, const Event& event) {
  return out << event.level << ' ' << event.sourceUnit << ": " << event.text;
}

/** Collects the library's events while it lives. */
class EventLog {
 public:
  EventLog() { kvlogSetSink(&EventLog::receive, this, 0); }
  ~EventLog() { kvlogSetSink(nullptr, nullptr, 0); }

  std::vector<Event> events;

 private:
  static void receive(const KvLogEvent& event, void* log) {
    if (std::string(event.category) != "KV.XDM") return;
    static_cast<EventLog*>(log)->events.push_back({event.level, event.sourceUnit, event.text});
  }
};

class MainObject : public ::testing::Test {
 protected:
  MainObject() {
    unsetenv("KVX_OPTIONS");
    kvbClearConfigOptions();
  }
  ~MainObject() override { kvbClearConfigOptions(); }
};

using CollectionVariable = MainObject;
using BenchMode = MainObject;
using MainObjectEvents = MainObject;

std::string collectionVariableName(unsigned flags) { return str(XDMMainImpl(flags).getCollectionVariableName()); }

TEST_F(MainObject, StartsEmpty) {
  XDMMainImpl main(0);
  EXPECT_EQ(main.getRootNode(), nullptr);
  EXPECT_EQ(main.root(), nullptr);
  EXPECT_EQ(main.decidingElement(), nullptr);
  EXPECT_EQ(main.getSelectedColumns(), 0);
  EXPECT_EQ(main.getSelectedColumn(0), nullptr);
  EXPECT_EQ(main.errorMessage().length(), 0);
  EXPECT_EQ(main.getNSList()->getCount(), 0);
  EXPECT_FALSE(main.getGroupExplicit());
}

TEST_F(MainObject, KeepsTheLastErrorMessageOnly) {
  XDMMainImpl main(0);
  main.setErrorMessage(kv("first"));
  main.setErrorMessage(kv("second"));
  EXPECT_EQ(str(main.errorMessage()), "second");
}

TEST_F(CollectionVariable, HasNoNameWithoutTheFlag) { EXPECT_EQ(collectionVariableName(0), ""); }

TEST_F(CollectionVariable, OtherFlagsChangeNothing) {
  for (int bit = 0; bit < 31; ++bit) EXPECT_EQ(collectionVariableName(1u << bit), "") << bit;
  EXPECT_EQ(collectionVariableName(0x7fffffffu), "");
}

TEST_F(CollectionVariable, NameEndsInAnIdentifierOfItsOwn) {
  std::string first = collectionVariableName(collectionFlag);
  std::string second = collectionVariableName(0xffffffffu);
  EXPECT_THAT(first, StartsWith("KV_"));
  EXPECT_EQ(first.size(), 3u + 36u);
  EXPECT_THAT(second, StartsWith("KV_"));
  EXPECT_NE(first, second);
}

TEST_F(BenchMode, FixesTheNameOfTheCollectionVariable) {
  kvbSetConfigOption(kv("Bench"), kv(""));
  EXPECT_EQ(collectionVariableName(collectionFlag), "KV_BENCH");
  EXPECT_EQ(collectionVariableName(collectionFlag), "KV_BENCH");
}

TEST_F(BenchMode, DoesNotDependOnTheValueOfTheOption) {
  for (const char* value : {"0", "no", "false", "yes"}) {
    kvbSetConfigOption(kv("Bench"), kv(value));
    EXPECT_EQ(collectionVariableName(collectionFlag), "KV_BENCH") << value;
  }
}

TEST_F(BenchMode, ComesFromTheEnvironmentToo) {
  setenv("KVX_OPTIONS", "Bench", 1);
  EXPECT_EQ(collectionVariableName(collectionFlag), "KV_BENCH");
  unsetenv("KVX_OPTIONS");
}

TEST_F(BenchMode, NeedsTheOptionOfThatNameOnly) {
  kvbSetConfigOption(kv("Other"), kv("Bench"));
  EXPECT_NE(collectionVariableName(collectionFlag), "KV_BENCH");
}

TEST_F(BenchMode, WithoutTheFlagIsNotLookedAt) {
  kvbSetConfigOption(kv("Bench"), kv(""));
  EventLog log;
  XDMMainImpl main(0);
  EXPECT_EQ(str(main.getCollectionVariableName()), "");
  EXPECT_THAT(log.events, IsEmpty());
}

TEST_F(BenchMode, IsLoggedOncePerMainObject) {
  kvbSetConfigOption(kv("Bench"), kv(""));
  EventLog log;
  XDMMainImpl first(collectionFlag), second(collectionFlag);
  const Event running{2, "kvxdm", "XDM running in BENCH mode"};
  EXPECT_THAT(log.events, ElementsAre(running, running));
}

TEST_F(MainObjectEvents, ConstructionIsSilent) {
  EventLog log;
  XDMMainImpl main(collectionFlag);
  EXPECT_THAT(log.events, IsEmpty());
}

TEST_F(MainObjectEvents, DestructionIsLogged) {
  EventLog log;
  { XDMMainImpl main(0); }
  EXPECT_THAT(log.events, ElementsAre(Event{2, "kvxdm", destroyed}));
}

TEST_F(MainObjectEvents, AskingForTheRootOfAnEmptyModelIsInformation) {
  XDMMainImpl main(0);
  EventLog log;
  EXPECT_EQ(main.getRootNode(), nullptr);
  EXPECT_THAT(log.events, ElementsAre(Event{2, "kvxdm", catalogue(1423)}));
}

TEST_F(MainObjectEvents, AskingForTheColumnsOfAnEmptyModelIsAnError) {
  XDMMainImpl main(0);
  EventLog log;
  EXPECT_EQ(main.getSelectedColumns(), 0);
  EXPECT_EQ(main.getSelectedColumn(0), nullptr);
  const Event noRoot{5, "kvxdm", catalogue(1423)};
  EXPECT_THAT(log.events, ElementsAre(noRoot, noRoot));
}

TEST_F(MainObjectEvents, APopulatedModelAnswersSilently) {
  Model model;
  EventLog log;
  EXPECT_EQ(model.main.getRootNode(), model.root);
  EXPECT_EQ(model.main.getSelectedColumns(), 0);
  EXPECT_EQ(model.main.getSelectedColumn(0), nullptr);
  EXPECT_THAT(log.events, IsEmpty());
}

TEST_F(MainObjectEvents, AskingLeavesTheErrorMessageAlone) {
  XDMMainImpl main(0);
  main.setErrorMessage(kv("before"));
  main.getRootNode();
  main.getSelectedColumns();
  EXPECT_EQ(str(main.errorMessage()), "before");
}

TEST_F(MainObject, ReleaseDestroysIt) {
  EventLog log;
  (new XDMMainImpl(0))->release();
  EXPECT_THAT(log.events, ElementsAre(Event{2, "kvxdm", destroyed}));
}

// What release() does without an object is the very thing tested, so no sanitizer shall object.
__attribute__((noinline, no_sanitize("undefined"))) void releaseItself(XDMMainImpl* main) {
  main->XDMMainImpl::release();
}

TEST_F(MainObject, ReleaseThroughANullPointerDoesNothing) {
  EventLog log;
  XDMMainImpl* volatile none = nullptr;  // volatile: no compiler sees through the call
  releaseItself(none);
  EXPECT_THAT(log.events, IsEmpty());
}

int declarationsAtDestruction = -1;

void countDeclarations(const KvLogEvent&, void* main) {
  declarationsAtDestruction = static_cast<XDMMainImpl*>(main)->getNSList()->getCount();
}

TEST_F(MainObject, LogsItsEndBeforeItDestroysItsNamespaceList) {
  auto* main = new XDMMainImpl(0);
  for (const char* prefix : {"a", "b"}) {
    main->getNSList()->appendItem(new XDMNSImpl(nullptr, kv(prefix), kv("u")));
  }
  main->getNSList()->appendItem(nullptr);
  kvlogSetSink(&countDeclarations, main, 0);
  main->release();
  kvlogSetSink(nullptr, nullptr, 0);
  EXPECT_EQ(declarationsAtDestruction, 3);
}

// The storage of tree and columns is left behind on purpose; this test cleans up only the tree, since a column's
// destructor asks its main object.
TEST_F(MainObject, LeavesTreeAndColumnsBehind) {
  auto* main = new XDMMainImpl(0);
  XDMElemImpl* root = main->createRoot(kv(""), kv("a"));
  XDMElemImpl* child = addChild(root, "b");
  XDMColumn* column = child->selectAsColumn(kv("name"), false);
  main->release();
  EXPECT_EQ(str(root->getLocalName()), "a");
  EXPECT_EQ(root->getChild(), child);
  EXPECT_EQ(str(column->getName()), "name");
  delete root;
}

class DecidingRow : public ::testing::Test {
 protected:
  Model model;
  XDMElemImpl* a = addChild(model.root, "a");
  XDMElemImpl* b = addChild(model.root, "b");
};

TEST_F(DecidingRow, IsAtMostOneElement) {
  EXPECT_TRUE(a->setDecidesRow(true));
  EXPECT_EQ(model.main.decidingElement(), a);
  EXPECT_TRUE(b->setDecidesRow(true));
  EXPECT_FALSE(a->getDecidesRow());
  EXPECT_TRUE(b->getDecidesRow());
  EXPECT_EQ(model.main.decidingElement(), b);
}

TEST_F(DecidingRow, IsNoneOnceCleared) {
  a->setDecidesRow(true);
  b->setDecidesRow(true);
  EXPECT_FALSE(b->setDecidesRow(false));
  EXPECT_EQ(model.main.decidingElement(), nullptr);
  EXPECT_FALSE(a->getDecidesRow());
  EXPECT_FALSE(b->getDecidesRow());
}

TEST_F(DecidingRow, StaysWhenSetAgain) {
  a->setDecidesRow(true);
  EXPECT_TRUE(a->setDecidesRow(true));
  EXPECT_EQ(model.main.decidingElement(), a);
}

// Odd and meant: clearing the flag of any element clears the one that is set.
TEST_F(DecidingRow, IsClearedByAnElementThatDoesNotDecide) {
  a->setDecidesRow(true);
  EXPECT_FALSE(b->setDecidesRow(false));
  EXPECT_FALSE(a->getDecidesRow());
  EXPECT_EQ(model.main.decidingElement(), nullptr);
}

}  // namespace

// Tests the operations of XDMMain and the factory with exhausted memory.
#include <gmock/gmock.h>

#include <new>

#include "sweep.h"

namespace {

std::string exhausted(const char* what) { return catalogue(29, what); }

std::set<std::string> operator+(std::set<std::string> some, const std::set<std::string>& more) {
  some.insert(more.begin(), more.end());
  return some;
}

const FaultFiles& files = FaultFiles::get();
const KvbString none;

// What may be said

const std::set<std::string> treeTexts = {exhausted("(XDM Root)"),
                                         exhausted("(XPath)"),
                                         "createChild() failed to instantiate a new child",
                                         "createChild() failed to append the new child",
                                         "createChild() failed to insert the new child",
                                         "createAttribute() failed to instantiate a new attribute",
                                         "createAttribute() failed to append  the new attribute",
                                         "createNamespace() failed to instantiate a new namespace",
                                         "createNamespace() failed to append  the new namespace"};

const std::set<std::string> saveTexts = {exhausted("(XDM Root)"), catalogue(1431, "xdm"), catalogue(1432, "version")};

/** The texts for the parts of the models' documents that could not be written. */
std::set<std::string> partTexts() {
  std::set<std::string> texts;
  for (const char* name :
       {"library", "book", "title", "price", "address", "shop", "order", "item", "date", "part", "name", "number"}) {
    for (int part : {1435, 1437, 1438}) texts.insert(catalogue(part, "element", name));
    texts.insert(std::string("Unable to include 'occurs' attribute value for element '") + name + "'.");
    texts.insert(std::string("Unable to include 'decides' attribute value for element '") + name + "'.");
  }
  for (const char* name : {"owner", "lang", "isbn", "edition", "customer", "size", "code"}) {
    for (int part : {1435, 1437, 1438}) texts.insert(catalogue(part, "attribute", name));
  }
  for (const char* part : {"m", "p", "q", "default namespace", "urn:meta", "urn:unused", "urn:p", "urn:q"}) {
    texts.insert(catalogue(1438, "namespace", part));
  }
  texts.insert(catalogue(1432, "default namespace"));
  return texts;
}

std::set<std::string> columnTexts() {
  std::set<std::string> texts;
  for (const char* name : {"customer", "date", "size", "price", "name", "code", "number"})
    texts.insert(catalogue(1433, name));
  for (const char* value : {"S", "M", "L"}) texts.insert(catalogue(1434, "Value", value));
  for (const char* what : {"(Selected Column)", "(XPath step array)", "(XPath step)", "(Valid Value)", "(enumeration)",
                           "(namespace)", "(insert namespace)", "(element namespace)", "(resolved XPath)"}) {
    texts.insert(exhausted(what));
  }
  for (const char* step : {"p:shop", "p:order", "p:item", "p:date", "p:price[1]", "@customer", "@size", "{1}shop",
                           "{1}item", "{1}part", "{2}name", "{2}number", "@{2}code"}) {
    texts.insert(catalogue(1445, step));
  }
  return texts;
}

std::set<std::string> importTexts(const KvbString& map) {
  return treeTexts + columnTexts() +
         std::set<std::string>{catalogue(472, map.asCstr(), "out of memory"), catalogue(472, map.asCstr(), "")};
}

const std::set<std::string> queryTexts = {exhausted("(XQuery)"), exhausted("(XQuery Namespaces)"),
                                          exhausted("(XPath Step)")};

std::set<std::string> stepTexts(const std::vector<const char*>& steps) {
  std::set<std::string> texts;
  for (std::string step : steps) {
    texts.insert("Failed to allocate memory to hold XPath step '" + step + "'.");
    texts.insert("Failed to capture XPath step '" + step + "'.");
    texts.insert(catalogue(1434, "(XPath Step)", step.c_str()));
  }
  return texts;
}

const std::set<std::string> markTexts =
    queryTexts +
    stepTexts({"library", "book", "title", "m:price", "address", "@owner", "@isbn", "p:shop", "p:order", "p:item",
               "p:date", "p:price[1]", "@customer", "@size", "p:part", "q:name", "q:number", "@q:code"});

// The operations

Operation load(const std::string& name, const std::vector<Kind>& kinds, std::function<bool(XDMMain*, KvbString*)> load,
               const std::set<std::string>& texts) {
  return {.name = name,
          .kinds = kinds,
          .prepare = [load](XDMMain* main) -> Act {
            return [main, load](Outcome* outcome) { outcome->succeeded = load(main, &outcome->error); };
          },
          .texts = texts,
          .undoesFailures = kinds != std::vector<Kind>{Kind::empty}};
}

bool loadFile(XDMMain* main, KvbString* error) { return main->loadFromFile(files.document, error); }

const KvbString documentText = kv(libraryModel);
bool loadText(XDMMain* main, KvbString* error) { return main->loadFromXML(documentText, error); }

const KvbString groupBy = kv(groupByText);
bool importPlain(XDMMain* main, KvbString* error) {
  return main->createFromXMLMap(files.plainMap, none, none, headingFlag | retainFlag, error);
}
bool importGrouped(XDMMain* main, KvbString* error) {
  return main->createFromXMLMap(files.plainMap, none, groupBy, headingFlag, error);
}
bool importExtended(XDMMain* main, KvbString* error) {
  return main->createFromXMLMap(files.extendedMap, none, none, 0, error);
}

constexpr char oldFile[] = "the file as it was";

Operation saveToFile() {
  return {.name = "saveToFile",
          .kinds = everyKind,
          .prepare = [](XDMMain* main) -> Act {
            writeFile(files.target.asCstr(), oldFile);
            return [main](Outcome* outcome) { outcome->succeeded = main->saveToFile(files.target, &outcome->error); };
          },
          .texts = saveTexts + partTexts() + std::set<std::string>{catalogue(463, files.target.asCstr())},
          .checkOutside =
              [](bool succeeded) {
                EXPECT_EQ(readFile(files.target.asCstr()) == oldFile, !succeeded);
                const std::filesystem::directory_iterator entries(files.folder.path());
                EXPECT_EQ(std::distance(begin(entries), end(entries)), 4) << "a temporary file is left";
              }};
}

Operation saveToXML() {
  return {.name = "saveToXML",
          .kinds = everyKind,
          .prepare = [](XDMMain* main) -> Act {
            return
                [main](Outcome* outcome) { outcome->succeeded = main->saveToXML(&outcome->result, &outcome->error); };
          },
          .texts = saveTexts + partTexts() + std::set<std::string>{catalogue(1430)}};
}

Operation query(const std::string& name, std::function<KvbString(XDMMain*, KvbString*)> generate) {
  return {.name = name,
          .kinds = everyKind,
          .prepare = [generate](XDMMain* main) -> Act {
            return [main, generate](Outcome* outcome) {
              outcome->result = generate(main, &outcome->error);
              outcome->succeeded = outcome->result.length() != 0;
            };
          },
          .texts = markTexts,
          // What goes wrong while elements are written has no text.
          .namesFailures = name.starts_with("genXQueryTo")};
}

XDMMain* self(XDMMain* main) { return main; }

const std::vector<Operation> operations = {
    load("loadFromFile", {Kind::empty}, loadFile,
         treeTexts + std::set<std::string>{catalogue(1428, files.document.asCstr())}),
    load("loadFromFileAgain", withRoot, loadFile, {exhausted("(XDM Root)")}),
    load("loadFromXML", {Kind::empty}, loadText, treeTexts + std::set<std::string>{catalogue(1429)}),
    load("loadFromXMLAgain", withRoot, loadText, {exhausted("(XDM Root)")}),
    saveToFile(),
    saveToXML(),
    load("createFromXMLMap", {Kind::empty}, importPlain, importTexts(files.plainMap)),
    load("createFromXMLMapWithGroupBy", {Kind::empty}, importGrouped,
         importTexts(files.plainMap) +
             std::set<std::string>{std::string("Failed to parse groupBy string '") + groupByText + "' (out of memory)",
                                   std::string("Failed to parse groupBy string '") + groupByText + "' ()"}),
    load("createFromXMLMapExtended", {Kind::empty}, importExtended, importTexts(files.extendedMap)),
    load("createFromXMLMapAgain", withRoot, importPlain, {exhausted("(XPath)")}),
    getter("getCollectionVariableName", everyKind, self, [](auto* m) { return m->getCollectionVariableName(); }),
    getter("getRootNode", everyKind, self, [](auto* m) { return m->getRootNode(); }),
    getter("getSelectedColumns", everyKind, self, [](auto* m) { return m->getSelectedColumns(); }),
    getter("getSelectedColumn", everyKind, self, [](auto* m) { return m->getSelectedColumn(0); }),
    query("genXQueryFromColumns", [](auto* m, auto* error) { return m->genXQueryFromColumns(false, false, error); }),
    query("genXQueryFromColumnsGrouped",
          [](auto* m, auto* error) { return m->genXQueryFromColumns(true, true, error); }),
    query("genXQueryToColumns", [](auto* m, auto* e) { return m->genXQueryToColumns(true, false, true, false, e); }),
    query("genXQueryToColumnsByPath",
          [](auto* m, auto* e) { return m->genXQueryToColumns(false, true, false, true, e); }),
};

class MainFault : public testing::TestWithParam<Case> {};

TEST_P(MainFault, LeavesNothingBetweenSuccessAndFailure) {
  const Findings findings = Sweep(*GetParam().operation, GetParam().kind).run();
  RecordProperty("points", static_cast<int>(findings.points));
  RecordProperty("attempts_in_xerces", static_cast<int>(findings.attemptsInXerces));
  RecordProperty("bytes_left_by_xerces", static_cast<int>(findings.bytesLeftByXerces));
}

INSTANTIATE_TEST_SUITE_P(Operation, MainFault, testing::ValuesIn(casesOf(operations)),
                         [](const auto& info) { return nameOf(info); });

/** How many blocks of memory a main object of that kind leaves behind when it ends with allocation `nth` failing. */
long blocksLeftByRelease(Kind kind, long nth, ProcessFaults::Extent extent, bool* met) {
  const long before = liveBlocks();
  XDMMain* main = Subject(kind).give();
  {
    ProcessFaults faults(nth, extent);
    main->release();
    *met = faults.met();
  }
  return liveBlocks() - before;
}

class ReleaseFault : public testing::TestWithParam<Kind> {};

TEST_P(ReleaseFault, FreesAsMuchAsWithMemory) {
  kvlogSetSink([](const KvLogEvent&, void*) {}, nullptr, 0);
  bool met = false;
  for (int i = 0; i < 3; ++i) blocksLeftByRelease(GetParam(), 0, ProcessFaults::Extent::once, &met);
  const long usual = blocksLeftByRelease(GetParam(), 0, ProcessFaults::Extent::once, &met);
  sweepAllocationFaults([&](long nth, ProcessFaults::Extent extent) {
    EXPECT_EQ(blocksLeftByRelease(GetParam(), nth, extent, &met), usual);
    return met;
  });
}

INSTANTIATE_TEST_SUITE_P(Kind, ReleaseFault, testing::ValuesIn(everyKind),
                         [](const auto& info) { return nameOf(info.param); });

/** Makes a main object and ends it, with allocation `nth` failing; whether it was met. */
bool makeWithFaults(unsigned flags, long nth, ProcessFaults::Extent extent) {
  bool met = false;
  XDMMain* main = nullptr;
  {
    ProcessFaults faults(nth, extent);
    try {
      main = kvxdmCreateMain(flags);
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(faults.met());
    }
    met = faults.met();
  }
  if (main) {
    EXPECT_EQ(main->getCollectionVariableName().length(), flags == 0 ? 0 : 3 + 36);
    main->release();
  }
  return met;
}

TEST(FactoryFault, GivesAWholeObjectOrThrows) {
  for (unsigned flags : {0u, 0x80000000u}) {
    for (long nth : {0, 1}) makeWithFaults(flags, nth, ProcessFaults::Extent::once);
    const long before = liveBlocks();
    const long points = sweepAllocationFaults(
        [&](long nth, ProcessFaults::Extent extent) { return makeWithFaults(flags, nth, extent); });
    EXPECT_EQ(liveBlocks(), before);
    EXPECT_GE(points, 1);
  }
}

}  // namespace

// Tests that every argument of message 29 reaches a host.
#include <gmock/gmock.h>

#include "sweep.h"

namespace {

/** The texts of `act` on models of that kind, with each of its allocations failing in turn. */
std::set<std::string> textsOf(Kind kind, std::function<bool(XDMMain*, KvbString*)> act) {
  std::set<std::string> texts;
  sweepAllocationFaults([&](long nth, ProcessFaults::Extent extent) {
    Subject subject(kind);
    KvbString error;
    bool met;
    {
      ProcessFaults faults(nth, extent);
      act(subject.main(), &error);
      met = faults.met();
    }
    texts.insert(str(error));
    return met;
  });
  return texts;
}

TEST(Message29, NamesEachOfItsFourteenObjects) {
  const FaultFiles& files = FaultFiles::get();
  const Subject begins(Kind::plainMap);  // the XML parser takes no failure while it begins
  const KvbString none, value = kv("v"), xpath = kv("/library/book/title");
  const KvbString longStep = kv("/library/@owner[string-length() != 0]");  // a short step needs no memory
  const std::set<std::string> texts[] = {
      textsOf(Kind::empty, [&](auto* m, auto* e) { return m->loadFromFile(files.document, e); }),
      textsOf(Kind::empty, [&](auto* m, auto* e) { return m->createFromXMLMap(files.plainMap, none, none, 0, e); }),
      textsOf(Kind::empty, [&](auto* m, auto* e) { return m->createFromXMLMap(files.extendedMap, none, none, 0, e); }),
      textsOf(Kind::withColumns, [&](auto* m, auto* e) { return m->getSelectedColumn(0)->addValidValue(value, e); }),
      textsOf(Kind::withColumns, [&](auto* m, auto* e) { return m->getSelectedColumn(0)->setXPath(xpath, e); }),
      textsOf(Kind::withColumns,
              [&](auto* m, auto* e) {
                return m->getSelectedColumn(0)->setXPath(longStep, e) &&
                       m->genXQueryToColumns(true, false, true, false, e).length() != 0;
              }),
  };
  std::set<std::string> seen;
  for (const auto& some : texts) {
    std::copy_if(some.begin(), some.end(), std::inserter(seen, seen.end()),
                 [](const std::string& text) { return text.starts_with("XDM29:"); });
  }
  std::vector<std::string> expected;
  for (const char* argument :
       {"(XDM Root)", "(Selected Column)", "(XPath)", "(XPath Step)", "(XPath step)", "(Valid Value)",
        "(XPath step array)", "(XQuery Namespaces)", "(XQuery)", "(resolved XPath)", "(insert namespace)",
        "(element namespace)", "(namespace)", "(enumeration)"}) {
    expected.push_back(catalogue(29, argument));
  }
  EXPECT_THAT(seen, testing::UnorderedElementsAreArray(expected));
}

}  // namespace

// Tests the XMLMap import when memory runs out behind the parse of the map: at each single allocation, and from each
// allocation on. What the parser does then is tested with the DOM service.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "allocation_faults.h"
#include "xmlmap.h"

namespace {

using testing::IsSupersetOf;

std::string plainMap() {
  const std::string typing =
      "<DATATYPE>string</DATATYPE><LENGTH>3</LENGTH><FORMAT>{f}</FORMAT><DEFAULT>a</DEFAULT>"
      "<ENUM><VALUE>a</VALUE><VALUE>b</VALUE></ENUM>";
  const std::string columns = column("x", "/p:d/r/p:x[1]", typing) + column("", "/p:d/r/@y");
  return rowmaps(
      "<OUTPUT><TABLEREF name='t'/><HEADING><ATTRIBUTE name='xmlns:p' value='urn:p'/>"
      "<ATTRIBUTE name='p:a' value='1'/></HEADING></OUTPUT>" +
      table("t", "/p:d/r", columns));
}

std::string extendedMap() {
  return rowmaps("<NAMESPACES><NS id='1' prefix='p'>urn:p</NS><NS id='2' prefix='q'>urn:q</NS></NAMESPACES>" +
                 table("t", "/{1}d/{1}r", column("x", "/{1}d/{1}r[1]/@{2}x") + column("y", "/{1}d/{2}s/y")));
}

/** The getters answer after every failure, and the root, if there is one, is whole. */
void expectAnswers(XDMMainImpl* main) {
  EXPECT_EQ(main->getSelectedColumn(main->getSelectedColumns()), nullptr);
  XDMElement* root = main->getRootNode();
  EXPECT_TRUE(!root || outline(root).starts_with(qualifiedName(root)));
}

/** The number of allocations that reading `file` takes, once the parser has done what it does once in a process. */
long allocationsOfTheParse(const KvbString& file) {
  KvDom first;
  EXPECT_TRUE(first.loadFile(file));
  KvDom second;
  const long before = allocationsSoFar();
  EXPECT_TRUE(second.loadFile(file));
  return allocationsSoFar() - before;
}

/** Imports `file` once, for what is made at the first import of a process. */
void importOnce(const KvbString& file) {
  XDMMainImpl* main = new XDMMainImpl(0);
  KvbString error;
  EXPECT_TRUE(main->createFromXMLMap(file, KvbString(), KvbString(), 0, &error)) << str(error);
  main->release();
}

/** Imports `map` with every allocation behind the parse failing in turn; returns the error texts that came of single
 * failures. */
std::set<std::string> errorsOfASweep(const std::string& map, std::string_view groupBy, unsigned flags) {
  std::set<std::string> errors;
  TemporaryFolder folder;
  const KvbString file = kv(folder.write("map.xml", map));
  const KvbString group = kv(groupBy);
  importOnce(file);
  const long parse = allocationsOfTheParse(file);
  sweepAllocationFaults([&](long nth, AllocationFaults::Extent extent) {
    XDMMainImpl* main = new XDMMainImpl(0);
    KvbString error;
    bool ok = false;
    bool met = false;
    {
      AllocationFaults faults(parse + nth, extent);
      ok = main->createFromXMLMap(file, KvbString(), group, flags, &error);
      met = faults.met();
    }
    EXPECT_TRUE(ok || met) << str(error);
    if (!ok && extent == AllocationFaults::Extent::once) errors.insert(str(error));
    expectAnswers(main);
    main->release();
    return met;
  });
  return errors;
}

TEST(MapMemory, ReportsWhatCouldNotBeAllocatedForAPlainMap) {
  EXPECT_THAT(errorsOfASweep(plainMap(), "a=x", 0x20000000),
              IsSupersetOf({catalogue(29, "(XDM Root)"), catalogue(29, "(XPath)"), catalogue(29, "(Selected Column)"),
                            catalogue(29, "(enumeration)"), catalogue(29, "(Valid Value)"), catalogue(1445, "p:x[1]"),
                            catalogue(1445, "@y")}));
}

TEST(MapMemory, ReportsWhatCouldNotBeAllocatedForAnExtendedMap) {
  EXPECT_THAT(errorsOfASweep(extendedMap(), "", 0),
              IsSupersetOf({catalogue(29, "(namespace)"), catalogue(29, "(insert namespace)"),
                            catalogue(29, "(element namespace)"), catalogue(29, "(resolved XPath)"),
                            catalogue(29, "(XPath)"), catalogue(1445, "{2}s"), catalogue(1445, "@{2}x")}));
}

TEST(MapMemory, NeverFailsWithoutAText) {
  for (const std::string& map : {plainMap(), extendedMap()}) {
    EXPECT_EQ(errorsOfASweep(map, "", 0x80000000).count(""), 0U);
  }
}

// The caller's own text stays when memory runs out in a late phase, and the main object has the message.
TEST(MapMemory, KeepsATextThatTheCallerHadInALatePhase) {
  TemporaryFolder folder;
  const KvbString file = kv(folder.write("map.xml", plainMap()));
  const long parse = allocationsOfTheParse(file);
  std::set<std::string> keptWith;
  sweepAllocationFaults([&](long nth, AllocationFaults::Extent) {
    XDMMainImpl* main = new XDMMainImpl(0);
    KvbString error = kv("mine");
    bool met = false;
    {
      AllocationFaults faults(parse + nth, AllocationFaults::Extent::once);
      const bool ok = main->createFromXMLMap(file, KvbString(), KvbString(), 0, &error);
      met = faults.met();
      if (!ok && str(error) == "mine") keptWith.insert(str(main->errorMessage()));
    }
    main->release();
    return met;
  });
  EXPECT_THAT(keptWith, IsSupersetOf({catalogue(29, "(XPath)"), catalogue(29, "(enumeration)")}));
}

}  // namespace

// Tests the texts that a host receives: each failure that it can bring about, by number and arguments.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kvxdm/kvxdm.h>

#include <functional>
#include <string>
#include <vector>

#include "host_model.h"
#include "library_model.h"
#include "temporary.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

/** A failure: what brings it about, its message and the arguments that the text shows. */
struct Failure {
  const char* name;
  std::function<void(KvbString*)> provoke;
  int number;
  std::vector<std::string> arguments;
};

void load(const std::string& xml, KvbString* error) {
  XDMMainPtr main(kvxdmCreateMain(0));
  EXPECT_FALSE(main->loadFromXML(kv(xml), error));
}

/** Runs `operation`, which shall fail, on a model without a root and on one with columns in the other case. */
std::function<void(KvbString*)> onEmptyModel(std::function<bool(XDMMain*, KvbString*)> operation) {
  return [operation](KvbString* error) {
    XDMMainPtr main(kvxdmCreateMain(0));
    EXPECT_FALSE(operation(main.get(), error));
  };
}

std::function<void(KvbString*)> onLibrary(std::function<bool(XDMMain*, KvbString*)> operation) {
  return [operation](KvbString* error) {
    XDMMainPtr main = loadModel(libraryModel);
    EXPECT_FALSE(operation(main.get(), error));
  };
}

std::function<void(KvbString*)> loading(const char* xml) {
  return [xml](KvbString* error) { load(xml, error); };
}

bool toRows(XDMMain* main, KvbString* error) {
  return main->genXQueryToColumns(true, false, true, false, error).length() != 0;
}

bool fromRows(XDMMain* main, KvbString* error) { return main->genXQueryFromColumns(true, false, error).length() != 0; }

bool saveText(XDMMain* main, KvbString* error) {
  KvbString xml;
  return main->saveToXML(&xml, error);
}

bool saveNowhere(XDMMain* main, KvbString* error) { return main->saveToFile(kv("/no/such/folder/f.xdm"), error); }
bool loadNothing(XDMMain* main, KvbString* error) { return main->loadFromFile(kv("/no/such/file.xdm"), error); }
bool loadText(XDMMain* main, KvbString* error) { return main->loadFromXML(kv(libraryModel), error); }

bool setLostXPath(XDMMain* main, KvbString* error) {
  return main->getRootNode()->selectAsColumn(kv("c"), false)->setXPath(kv("/library/shelf/book"), error);
}

const std::vector<Failure> failures = {
    {"LoadIntoAPopulatedModel", onLibrary(loadText), 1422, {}},
    {"LoadFileIntoAPopulatedModel", onLibrary(loadNothing), 1422, {}},
    {"SaveAnEmptyModelAsText", onEmptyModel(saveText), 1423, {}},
    {"SaveAnEmptyModelAsFile", onEmptyModel(saveNowhere), 1423, {}},
    {"QueryToRowsOfAnEmptyModel", onEmptyModel(toRows), 1423, {}},
    {"QueryFromRowsOfAnEmptyModel", onEmptyModel(fromRows), 1423, {}},
    {"LoadAnUnknownVersion", loading("<xdm version='3.7'/>"), 1424, {"3.7"}},
    {"LoadAnotherDocument", loading("<other version='1.0'/>"), 1425, {}},
    {"LoadWithoutRootElement", loading("<xdm version='1.0'/>"), 1425, {}},
    {"LoadWithAnotherFirstChild", loading("<xdm version='1.0'><node/></xdm>"), 1426, {"xdm", "element"}},
    {"LoadWithTwoChildren", loading("<xdm version='1.0'><element name='a'/><element name='b'/></xdm>"), 1427, {"xdm"}},
    {"LoadAMissingFile", onEmptyModel(loadNothing), 1428, {"/no/such/file.xdm"}},
    {"LoadWhatIsNotXml", loading("<xdm"), 1429, {}},
    {"LoadAnElementWithoutName", loading("<xdm version='1.0'><element/></xdm>"), 1439, {"name", "element"}},
    {"LoadAnAttributeWithoutName",
     loading("<xdm version='1.0'><element name='a'><attribute/></element></xdm>"),
     1439,
     {"name", "attribute"}},
    {"SaveIntoAMissingFolder", onLibrary(saveNowhere), 463, {"/no/such/folder/f.xdm"}},
    {"QueryToRowsWithoutColumns", onLibrary(toRows), 1441, {}},
    {"QueryFromRowsWithoutColumns", onLibrary(fromRows), 1441, {}},
    {"SetAnXPathThatLeadsNowhere", onLibrary(setLostXPath), 1445, {"shelf"}},
};

class FailureText : public ::testing::TestWithParam<Failure> {};

TEST_P(FailureText, BeginsWithItsNumberAndShowsItsArguments) {
  KvbString error;
  GetParam().provoke(&error);
  const std::string text = str(error);
  EXPECT_THAT(text, StartsWith("XDM" + std::to_string(GetParam().number) + ": "));
  for (const std::string& argument : GetParam().arguments) EXPECT_THAT(text, HasSubstr(argument));
  // A sentence, not a bare list of the arguments.
  EXPECT_GT(text.size(), 20u);
  EXPECT_EQ(text.back(), '.');
}

INSTANTIATE_TEST_SUITE_P(Host, FailureText, ::testing::ValuesIn(failures),
                         [](const auto& instance) { return instance.param.name; });

TEST(FailureTextWithoutNumber, NamesTheOccursThatIsNoNumber) {
  KvbString error;
  load("<xdm version='1.0'><element name='a' occurs='many'/></xdm>", &error);
  EXPECT_EQ(str(error), "occurs value 'many' is not numeric.");
}

TEST(FailureTextWithoutNumber, SaysThatNoElementDecidesTheRow) {
  XDMMainPtr main = loadModel("<xdm version='1.0'><element name='a'/></xdm>");
  main->getRootNode()->selectAsColumn(kv("c"), false);
  KvbString error;
  EXPECT_FALSE(toRows(main.get(), &error));
  EXPECT_EQ(str(error), "No element decides the row.");
}

}  // namespace

// Tests how a host loads and saves models, as files and as texts.
#include <gtest/gtest.h>
#include <kvxdm/kvxdm.h>

#include <string>

#include "host_model.h"
#include "library_model.h"
#include "temporary.h"

namespace {

class LoadSave : public ::testing::Test {
 protected:
  TemporaryFolder folder;
  XDMMainPtr main{kvxdmCreateMain(0)};
  KvbString error = kv("untouched");
};

std::string saved(XDMMain* main) {
  KvbString xml, error;
  EXPECT_TRUE(main->saveToXML(&xml, &error)) << str(error);
  return str(xml);
}

TEST_F(LoadSave, OfATextGivesTheSameBytes) {
  EXPECT_TRUE(main->loadFromXML(kv(libraryModel), &error));
  EXPECT_EQ(saved(main.get()), libraryModel);
  EXPECT_EQ(str(error), "untouched");
}

TEST_F(LoadSave, OfAFileGivesTheSameBytes) {
  EXPECT_TRUE(main->loadFromFile(kv(folder.write("first.xdm", libraryModel)), &error));
  EXPECT_TRUE(main->saveToFile(kv(folder.file("second.xdm")), &error));
  EXPECT_EQ(readFile(folder.file("second.xdm")), libraryModel);
  EXPECT_EQ(str(error), "untouched");
}

TEST_F(LoadSave, DoesNotCarryColumns) {
  main = loadModel(libraryModel);
  main->getRootNode()->selectAsColumn(kv("c"), true)->setType(2);
  EXPECT_EQ(saved(main.get()), libraryModel);
  XDMMainPtr again = loadModel(saved(main.get()));
  EXPECT_EQ(again->getSelectedColumns(), 0);
}

TEST_F(LoadSave, OverwritesAFile) {
  std::string path = folder.write("model.xdm", std::string(100000, 'x'));
  main = loadModel(libraryModel);
  EXPECT_TRUE(main->saveToFile(kv(path), &error));
  EXPECT_EQ(readFile(path), libraryModel);
}

TEST_F(LoadSave, ASecondLoadIsRefusedAndChangesNothing) {
  main = loadModel(libraryModel);
  EXPECT_FALSE(main->loadFromXML(kv("<xdm version='1.0'><element name='other'/></xdm>"), &error));
  EXPECT_EQ(str(error), catalogue(1422));
  EXPECT_EQ(saved(main.get()), libraryModel);
}

TEST_F(LoadSave, OfAnEmptyModelLeavesTextAndFileAlone) {
  KvbString xml = kv("untouched");
  std::string path = folder.write("model.xdm", "old");
  EXPECT_FALSE(main->saveToXML(&xml, &error));
  EXPECT_EQ(str(error), catalogue(1423));
  EXPECT_FALSE(main->saveToFile(kv(path), &error));
  EXPECT_EQ(str(xml), "untouched");
  EXPECT_EQ(readFile(path), "old");
}

TEST_F(LoadSave, ARefusedTextLeavesTheModelEmptyForAnother) {
  EXPECT_FALSE(main->loadFromXML(kv("<library/>"), &error));
  EXPECT_EQ(str(error), catalogue(1425));
  EXPECT_TRUE(main->loadFromXML(kv(libraryModel), &error));
}

TEST_F(LoadSave, ABadNodeLeavesWhatWasReadBeforeIt) {
  EXPECT_FALSE(main->loadFromXML(kv("<xdm version='1.0'><element name='a'><element/></element></xdm>"), &error));
  EXPECT_EQ(str(error), catalogue(1439, "name", "element"));
  EXPECT_EQ(str(main->getRootNode()->getXPath()), "/a");
  EXPECT_FALSE(main->loadFromXML(kv(libraryModel), &error));
  EXPECT_EQ(str(error), catalogue(1422));
}

TEST_F(LoadSave, ModelsAreIndependent) {
  main = loadModel(libraryModel);
  XDMMainPtr other = loadModel("<xdm version='1.0'><element name='other'/></xdm>");
  main->getRootNode()->selectAsColumn(kv("c"), false);
  EXPECT_EQ(other->getSelectedColumns(), 0);
  EXPECT_EQ(str(other->getRootNode()->getLocalName()), "other");
}

}  // namespace

// Tests `xdm query`: the bytes of the library, for every option of the generators.
#include <kvxdm/kvxdm.h>

#include "tool.h"

namespace {

class Query : public ToolTest {
 protected:
  /** The library itself, with the model of the tests and its title and subject as columns. */
  XDMMainPtr host(unsigned int flags = 0) const {
    XDMMainPtr main(kvxdmCreateMain(flags));
    KvbString error;
    EXPECT_TRUE(main->loadFromFile(KvbString(model.c_str(), true), &error));
    XDMElement* shelf = main->getRootNode()->getChild();
    shelf->getChild()->getChild()->selectAsColumn(KvbString(), false);
    shelf->getNextAttribute(nullptr)->selectAsColumn(KvbString("about", true), true);
    return main;
  }

  std::string toRows(bool streaming, bool sequence, bool relative, bool keep) const {
    KvbString error;
    return host()->genXQueryToColumns(streaming, sequence, relative, keep, &error).asCstr();
  }

  std::string fromRows(bool streaming, bool group) const {
    KvbString error;
    return host()->genXQueryFromColumns(streaming, group, &error).asCstr();
  }

  std::string printed(const std::string& direction, const Words& options) const {
    Words words = {"query", direction, model, "--column", title, "--group-column", subject + "=about"};
    words.insert(words.end(), options.begin(), options.end());
    return outputOf(words);
  }
};

TEST_F(Query, ToRowsPrintsTheBytesOfTheLibrary) {
  EXPECT_EQ(printed("to-rows", {}), toRows(true, false, true, false));
  EXPECT_EQ(printed("to-rows", {"--streaming-option"}), toRows(false, false, true, false));
  EXPECT_EQ(printed("to-rows", {"--sequence"}), toRows(true, true, true, false));
  EXPECT_EQ(printed("to-rows", {"--absolute-lets"}), toRows(true, false, false, false));
  EXPECT_EQ(printed("to-rows", {"--keep-whitespace"}), toRows(true, false, true, true));
}

TEST_F(Query, FromRowsPrintsTheBytesOfTheLibrary) {
  EXPECT_EQ(printed("from-rows", {}), fromRows(true, false));
  EXPECT_EQ(printed("from-rows", {"--streaming-option"}), fromRows(false, false));
  EXPECT_EQ(printed("from-rows", {"--group-rows"}), fromRows(true, true));
}

TEST_F(Query, ReadsTheCollectionOfAVariable) {
  ProcessResult result =
      xdm({"query", "to-rows", model, "--column", title, "--collection"}, "", {{"KVX_OPTIONS", "Bench"}});
  EXPECT_THAT(result.output, testing::HasSubstr("\ndeclare variable $KV_BENCH as xs:string external;"));
  EXPECT_THAT(result.output, testing::HasSubstr("\nfor $row in collection($KV_BENCH)/library/shelf/book"));
}

TEST_F(Query, WithoutColumnsIsTheLibrarysFailure) {
  EXPECT_THAT(errorOf({"query", "to-rows", model}), testing::StartsWith("xdm: error: XDM1441: "));
  EXPECT_THAT(errorOf({"query", "from-rows", model}), testing::StartsWith("xdm: error: XDM1441: "));
}

TEST_F(Query, WithoutARowIsTheLibrarysFailure) {
  std::string rowless = write("rowless.xdm", R"(<xdm version="1.0"><element name="a"/></xdm>)");
  EXPECT_EQ(errorOf({"query", "to-rows", rowless, "--column", "/a"}), "xdm: error: No element decides the row.");
}

}  // namespace

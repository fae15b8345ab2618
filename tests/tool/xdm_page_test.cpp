// Tests `xdm show --html` as far as files and bytes go; tests/browser looks at the page.
#include "tool.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class Page : public ToolTest {
 protected:
  std::string page(Words words, std::string_view input = {}) const {
    words.insert(words.begin(), {"show", "--html", file("page.html")});
    EXPECT_EQ(outputOf(words, input), "");
    return readFile(file("page.html"));
  }
};

TEST_F(Page, IsWrittenInsteadOfTheTree) {
  std::string text = page({model, "--column", title});
  EXPECT_THAT(text, testing::StartsWith("<!DOCTYPE html>\n"));
  EXPECT_THAT(text, testing::EndsWith("</html>\n"));
  EXPECT_THAT(text, HasSubstr(R"([2,"book","/book",true],[3,"isbn","/@isbn",false],[3,"title","/title",false])"));
}

TEST_F(Page, NamesNothingOutsideItself) {
  std::string text = page({model, "--column", title});
  for (const char* outside : {"http:", "https:", "src=", "@import", "url("}) EXPECT_THAT(text, Not(HasSubstr(outside)));
}

TEST_F(Page, EscapesWhatCouldEndItsScript) {
  std::string hostile = "</script><!--\"'\\";
  std::string text = page({model, "--column", title + "=" + hostile});
  EXPECT_THAT(text, HasSubstr(R"("name":"\u003c/script>\u003c!--\"'\\")"));
  EXPECT_THAT(text, Not(HasSubstr(hostile)));
}

TEST_F(Page, HasTheMessageOfTheLibraryWhereThereIsNoQuery) {
  std::string text = page({model});
  EXPECT_THAT(text, HasSubstr(R"("toRows":{"problem":"XDM1441: )"));
  EXPECT_THAT(text, HasSubstr(R"("fromRows":{"problem":"XDM1441: )"));
}

TEST_F(Page, IsWrittenWholeOrNotAtAll) {
  std::string before = write("page.html", "before");
  EXPECT_THAT(errorOf({"show", model, "--html", before, "--row", "/none"}), HasSubstr("--row"));
  EXPECT_EQ(readFile(before), "before");
  errorOf({"show", model, "--html", file("none/page.html")});
}

TEST_F(Page, AndTheTreeAreNotWrittenAtOnce) {
  errorOf({"show", model, "--html", file("page.html"), "-o", file("tree.txt")}, 2);
}

}  // namespace

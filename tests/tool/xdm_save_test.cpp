// Tests `xdm save`, and `-o` where all goes well.
#include <kvxdm/kvxdm.h>
#include <unistd.h>

#include "tool.h"

namespace {

namespace fs = std::filesystem;

class Save : public ToolTest {
 protected:
  std::string savedByTheLibrary() const {
    XDMMainPtr main(kvxdmCreateMain(0));
    KvbString error;
    KvbString text;
    EXPECT_TRUE(main->loadFromFile(KvbString(model.c_str(), true), &error) && main->saveToXML(&text, &error));
    return text.asCstr();
  }
};

TEST_F(Save, PrintsTheBytesOfTheLibrary) { EXPECT_EQ(outputOf({"save", model}), savedByTheLibrary()); }

TEST_F(Save, OfWhatWasSavedGivesTheSameBytes) {
  std::string once = outputOf({"save", model});
  EXPECT_EQ(outputOf({"save", "-"}, once), once);
}

TEST_F(Save, PrintsNothingWhenItWritesAFile) {
  EXPECT_EQ(outputOf({"save", model, "-o", file("out.xdm")}), "");
  EXPECT_EQ(readFile(file("out.xdm")), savedByTheLibrary());
}

TEST_F(Save, WritesOverTheModelItself) {
  std::string expected = savedByTheLibrary();
  outputOf({"save", model, "--output", model});
  EXPECT_EQ(readFile(model), expected);
}

TEST_F(Save, FollowsASymbolicLink) {
  fs::create_symlink(model, file("link"));
  std::string expected = savedByTheLibrary();
  outputOf({"save", file("link"), "-o", file("link")});
  EXPECT_TRUE(fs::is_symlink(file("link")));
  EXPECT_EQ(readFile(model), expected);
}

TEST_F(Save, KeepsThePermissionsOfTheFile) {
  fs::permissions(model, fs::perms(0640));
  outputOf({"save", model, "-o", model});
  EXPECT_EQ(fs::status(model).permissions(), fs::perms(0640));
}

TEST_F(Save, WritesADevice) { EXPECT_EQ(outputOf({"save", model, "-o", "/dev/stdout"}), savedByTheLibrary()); }

TEST_F(Save, MarksTheRowThatWasGiven) {
  EXPECT_THAT(outputOf({"save", model, "--row", "/library/shelf"}),
              testing::HasSubstr(R"(<element name="shelf" occurs="1" decides="true">)"));
}

}  // namespace

// Tests that the tool takes no harm from documents made to do it: nothing is opened but what was named, and a refusal
// is an ordinary failure.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "process.h"
#include "temporary.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

/** Sees whether a file is opened, by whichever process. */
class OpenWatch {
 public:
  explicit OpenWatch(const std::string& path) : descriptor_(inotify_init1(IN_NONBLOCK)) {
    EXPECT_GE(inotify_add_watch(descriptor_, path.c_str(), IN_OPEN), 0);
  }
  ~OpenWatch() { close(descriptor_); }
  OpenWatch(const OpenWatch&) = delete;
  OpenWatch& operator=(const OpenWatch&) = delete;

  bool wasOpened() const {
    char events[1024];
    return read(descriptor_, events, sizeof events) > 0;
  }

 private:
  int descriptor_;
};

struct Trap {
  const char* name;
  std::string declaration;  // "TRAP" stands for a file that must not be opened
  bool accepted;
};

void PrintTo(const Trap& trap, std::ostream* out) { *out << trap.name; }

const std::vector<Trap> traps = {
    {"ExternalSubset", "<!DOCTYPE ROOT SYSTEM 'TRAP'>", true},
    {"ExternalSubsetByUrl", "<!DOCTYPE ROOT PUBLIC '-//X//Y' 'file://TRAP'>", true},
    {"MissingExternalSubset", "<!DOCTYPE ROOT SYSTEM '/nowhere/none.dtd'>", true},
    {"FileReadingEntity", "<!DOCTYPE ROOT [<!ENTITY e SYSTEM 'TRAP'>]>", false},
    {"FileReadingParameterEntity", "<!DOCTYPE ROOT [<!ENTITY % e SYSTEM 'TRAP'> %e;]>", false},
    {"EntityFlood", "<!DOCTYPE ROOT [<!ENTITY a 'lol'><!ENTITY b '&a;&a;&a;&a;&a;&a;'>]>", false},
    {"QuadraticBlowUp", "<!DOCTYPE ROOT [<!ENTITY e '" + std::string(100'000, 'x') + "'>]>", false},
};

class HostileTool : public testing::TestWithParam<Trap> {
 protected:
  std::string document(const std::string& root, const std::string& body) const {
    std::string text = GetParam().declaration;
    for (const auto& [what, with] : {std::pair<std::string, std::string>("ROOT", root), {"TRAP", trap_}}) {
      const auto at = text.find(what);
      if (at != std::string::npos) text.replace(at, what.size(), with);
    }
    return text + body;
  }

  void expectRefusalUnlessAccepted(const ProcessResult& result) const {
    EXPECT_EQ(result.status, GetParam().accepted ? 0 : 1) << result.error;
    if (GetParam().accepted) return;
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.error, StartsWith("xdm: error: "));
  }

  TemporaryFolder folder_;
  const std::string trap_ = folder_.write("trap", "<!ATTLIST element name CDATA 'from the trap'>");
  const OpenWatch watch_{trap_};
};

TEST_P(HostileTool, ReadsNothingButTheModel) {
  const std::string model = document("xdm", "<xdm version='1.0'><element name='a'/></xdm>");
  for (const char* command : {"show", "save", "columns"}) {
    expectRefusalUnlessAccepted(runProcess({XDM_TOOL, command, folder_.write("model.xdm", model)}));
    expectRefusalUnlessAccepted(runProcess({XDM_TOOL, command, "-"}, model));
  }
  EXPECT_FALSE(watch_.wasOpened());
}

TEST_P(HostileTool, ReadsNothingButTheMap) {
  const std::string map = document("ROWMAPS",
                                   "<ROWMAPS version='1.9'><TABLE name='t'><TABLE-PATH>/r</TABLE-PATH>"
                                   "<COLUMN name='c'><PATH>/r/c</PATH><TYPE>numeric</TYPE></COLUMN></TABLE></ROWMAPS>");
  const std::string path = folder_.write("map.xml", map);
  expectRefusalUnlessAccepted(runProcess({XDM_TOOL, "tables", path}));
  expectRefusalUnlessAccepted(runProcess({XDM_TOOL, "query", "to-rows", path}));
  EXPECT_FALSE(watch_.wasOpened());
}

INSTANTIATE_TEST_SUITE_P(With, HostileTool, testing::ValuesIn(traps), [](const auto& info) { return info.param.name; });

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

TEST(HostileToolInput, DeeperThanTheLimitIsAnOrdinaryFailure) {
  TemporaryFolder folder;
  const std::string path = repeated("/a", 20'000);
  const std::string map = folder.write(
      "map.xml", "<ROWMAPS version='1.9'><TABLE name='t'><TABLE-PATH>" + path + "</TABLE-PATH></TABLE></ROWMAPS>");
  const ProcessResult result = runProcess({XDM_TOOL, "query", "from-rows", map});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.error, HasSubstr("XDM1445: The path step \"a\""));
}

TEST(HostileToolInput, OfTheDeepestModelIsShownAndQueried) {
  TemporaryFolder folder;
  const std::string model = folder.write(
      "deep.xdm", "<xdm version='1.0'>" + repeated("<element name='a'>", 999) + repeated("</element>", 999) + "</xdm>");
  const std::string deepest = repeated("/a", 999);
  EXPECT_EQ(runProcess({XDM_TOOL, "show", model}).status, 0);
  for (const char* direction : {"to-rows", "from-rows"}) {
    EXPECT_EQ(runProcess({XDM_TOOL, "query", direction, model, "--row", deepest, "--column", deepest}).status, 0);
  }
}

}  // namespace

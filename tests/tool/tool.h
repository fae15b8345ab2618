// Runs the tool as a person would, on a small library of books.
#ifndef KVXDM_TESTS_TOOL_H
#define KVXDM_TESTS_TOOL_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "process.h"
#include "temporary.h"

inline constexpr char libraryXdm[] = R"(<xdm version="1.0">
  <element name="library">
    <attribute name="city"/>
    <element name="shelf">
      <attribute name="subject"/>
      <element name="book" decides="true">
        <attribute name="isbn"/>
        <element name="title"/>
        <element name="author"/>
      </element>
    </element>
  </element>
</xdm>)";

inline constexpr char libraryXml[] = R"(<library city="Ghent">
  <shelf subject="Botany">
    <book isbn="1"><title>Mosses</title><author>Ada</author></book>
    <book isbn="2"><title>Trees, in
       winter</title></book>
  </shelf>
  <shelf subject="Maps"><book isbn="3"><title>The "Coasts"</title></book></shelf>
</library>)";

using Words = std::vector<std::string>;

/** A folder with the model `model` and the document `document` of the library, and the tool. */
class ToolTest : public testing::Test {
 protected:
  using Environment = std::vector<std::pair<std::string, std::string>>;

  static ProcessResult xdm(const Words& words, std::string_view input = {}, const Environment& environment = {}) {
    Words command = {XDM_TOOL};
    command.insert(command.end(), words.begin(), words.end());
    return runProcess(command, input, environment);
  }

  /** What the tool prints, which must succeed in silence. */
  static std::string outputOf(const Words& words, std::string_view input = {}) {
    ProcessResult result = xdm(words, input);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "");
    return result.output;
  }

  /** The first line on standard error of a run that must fail with `status` and print nothing. */
  static std::string errorOf(const Words& words, int status = 1, std::string_view input = {}) {
    ProcessResult result = xdm(words, input);
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.output, "");
    return result.error.substr(0, result.error.find('\n'));
  }

  std::string write(std::string_view name, std::string_view text) const { return folder_.write(name, text); }
  std::string file(std::string_view name) const { return folder_.file(name); }

 private:
  TemporaryFolder folder_;

 protected:
  const std::string model = write("library.xdm", libraryXdm);
  const std::string document = write("library.xml", libraryXml);
  const std::string title = "/library/shelf/book/title";
  const std::string isbn = "/library/shelf/book/@isbn";
  const std::string subject = "/library/shelf/@subject";
};

#endif

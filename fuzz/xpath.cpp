// Takes each line of the input as an XPath: cut into steps, validated for a column, its steps taken apart; all against
// plain re-implementations.
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "input.h"
#include "kvxdmmap_path.h"
#include "models.h"
#include "xmlmap.h"

namespace {

using Steps = std::vector<std::string>;

// Names with colons, brackets and "@" of their own, namesakes apart by prefix, and children enough for an index.
std::string document() {
  std::string text =
      "<xdm version='1.0'><element name='a' prefix='p'><namespace prefix='p' uri='u'/><namespace prefix='p:q' uri='v'/>"
      "<element name='b'><element name='c'/><element name='c' prefix='p'/><attribute name='d'/></element>"
      "<element name='b' prefix='p'><element name='[1]'/><element name='@d'><element name='e'/></element></element>"
      "<element name='q:b' prefix='p'/><element name='b' prefix='p:q'><element name='f'/></element>"
      "<element name='p:b'/><element name=':'/>";
  for (char name = 'g'; name <= 'z'; ++name) text += std::string("<element name='") + name + "'/>";
  return text + "</element></xdm>";
}

/** A model with a column, made once: an XPath that is accepted changes nothing but the column. */
struct Subject {
  Subject() {
    KvbString error;
    EXPECT_TRUE(main->loadFromXML(kv(document()), &error)) << str(error);
    column = main->root()->selectAsColumn(kv("column"), false);
  }

  MainPtr main = makeMain();
  XDMColumn* column = nullptr;
};

/** The texts between the "/" behind the first character; a last one counts unless it is empty. */
Steps cut(std::string_view xpath) {
  Steps steps;
  std::string step;
  for (char character : xpath.substr(xpath.empty() ? 0 : 1)) {
    if (character == '/') {
      steps.push_back(step);
      step.clear();
    } else {
      step += character;
    }
  }
  if (!step.empty()) steps.push_back(step);
  return steps;
}

Steps cutByLibrary(XDMMainImpl& main, std::string_view xpath) {
  int count = 0;
  const std::unique_ptr<KvbString[]> array(main.parseXPath(kv(xpath), &count));
  Steps steps;
  for (int i = 0; i < count; ++i) steps.push_back(str(array[static_cast<std::size_t>(i)]));
  return steps;
}

/** How many of `steps` lead from `first` or one of its siblings down the tree. */
std::size_t matching(XDMNode* first, const Steps& steps, std::size_t from = 0) {
  if (from == steps.size()) return from;
  for (XDMNode* node = first; node; node = node->getNextSibling()) {
    if (qualifiedName(node) == steps[from]) return matching(node->getChild(), steps, from + 1);
  }
  return from;
}

void cutPredicates(Steps* steps) {
  for (std::string& step : *steps) {
    const std::size_t bracket = step.find('[', 0);
    if (bracket != 0 && bracket != std::string::npos) step.resize(bracket);
  }
}

/** The message that the XPath must be refused with; empty when it must be accepted. */
std::string refusal(XDMMainImpl& main, std::string_view xpath) {
  Steps steps = cut(xpath);
  cutPredicates(&steps);
  const std::size_t matched = matching(main.root(), steps);
  if (!steps.empty() && matched == steps.size()) return {};
  if (!steps.empty() && matched + 1 == steps.size() && steps.back().starts_with('@')) return {};
  return catalogue(1445, matched < steps.size() ? steps[matched].c_str() : "");
}

void validate(Subject& subject, std::string_view xpath) {
  const std::string before = str(subject.column->getXPath());
  const std::string expected = refusal(*subject.main, xpath);
  KvbString error;
  EXPECT_EQ(subject.column->setXPath(kv(xpath), &error), expected.empty());
  EXPECT_EQ(str(error), expected);
  EXPECT_EQ(str(subject.column->getXPath()), expected.empty() ? xpath : before);
}

/** What was taken apart gives the step again. */
void takeApart(const std::string& text) {
  const std::string at = text.starts_with('@') ? "@" : "";
  xmlmap::LocationStep plain(text);
  EXPECT_TRUE(xmlmap::separateXPathStep(&plain));
  EXPECT_EQ(at + str(plain.prefix) + (plain.prefix.isNull() ? "" : ":") + str(plain.localName) + str(plain.predicate),
            text);
  xmlmap::LocationStep extended(text);
  if (!xmlmap::separateXPathENRStep(&extended)) return;
  const std::string reference = extended.reference.isNull() ? "" : "{" + str(extended.reference) + "}";
  EXPECT_EQ(at + reference + str(extended.localName) + str(extended.predicate), text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Subject subject;
  for (Input input(data, size); !input.atEnd();) {
    const std::string_view xpath = input.line();
    const Steps steps = cut(xpath);
    EXPECT_EQ(cutByLibrary(*subject.main, xpath), steps);
    for (const std::string& step : steps) takeApart(step);
    validate(subject, xpath);
  }
  return 0;
}

// Writes a tree as XML, level by level without recursion.
// Tested by tests/unit/kvdom_write_test.cpp.
#include <kvxdom/kvdom_text.h>
#include <kvxdom/kvdom_writer.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace {

enum class Place { attribute, text };

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\n\r") == std::string_view::npos; }

bool isEmpty(const KvDomElement& element) { return !element.firstChild && element.textBegin == element.textEnd; }

bool isForbidden(char byte) {
  return static_cast<unsigned char>(byte) < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
}

/** What stands for `byte`; empty when it stands for itself. Tabs and line ends of an attribute would be read as blanks.
 */
std::string_view escapeOf(char byte, Place place) {
  switch (byte) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '\r':
      return "&#13;";
    case '"':
      return place == Place::attribute ? "&quot;" : "";
    case '\t':
      return place == Place::attribute ? "&#9;" : "";
    case '\n':
      return place == Place::attribute ? "&#10;" : "";
    default:
      return "";
  }
}

/** Collects output and hands it on in large pieces. The first failure sticks. */
class Output {
 public:
  // cppcheck-suppress uninitMemberVar ; nothing of the buffer is read before it is written
  explicit Output(KvDomSink& sink) : sink_(sink) {}

  KvDomWriting state() const { return state_; }

  void put(std::string_view bytes) {
    while (bytes.size() > sizeof buffer_ - used_) {
      std::size_t fitting = sizeof buffer_ - used_;
      copyIn(bytes.substr(0, fitting));
      bytes.remove_prefix(fitting);
      flush();
    }
    copyIn(bytes);
  }

  void put(char byte) {
    if (used_ == sizeof buffer_) flush();
    buffer_[used_++] = byte;
  }

  void putEscaped(std::string_view text, Place place) {
    std::size_t plain = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (static_cast<unsigned char>(text[i]) > '>') continue;  // nothing above it is escaped
      if (isForbidden(text[i])) fail(KvDomWriting::forbiddenCharacter);
      std::string_view escape = escapeOf(text[i], place);
      if (escape.empty()) continue;
      put(text.substr(plain, i - plain));
      put(escape);
      plain = i + 1;
    }
    put(text.substr(plain));
  }

  void flush() {
    if (state_ == KvDomWriting::done && !sink_.write(buffer_, used_)) fail(KvDomWriting::sinkFailed);
    used_ = 0;
  }

 private:
  void copyIn(std::string_view bytes) {
    std::memcpy(buffer_ + used_, bytes.data(), bytes.size());
    used_ += bytes.size();
  }

  void fail(KvDomWriting how) {
    if (state_ == KvDomWriting::done) state_ = how;
  }

  KvDomSink& sink_;
  KvDomWriting state_ = KvDomWriting::done;
  std::size_t used_ = 0;
  char buffer_[16 * 1024];
};

class Writer {
 public:
  Writer(const KvDomTree& tree, bool indent, KvDomSink& sink) : tree_(tree), indent_(indent), output_(sink) {}

  KvDomWriting write(const KvDomElement& root) {
    if (indent_) output_.put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    textPosition_ = root.textBegin;
    writeFrom(root);
    output_.flush();
    return output_.state();
  }

 private:
  void writeFrom(const KvDomElement& root) {
    const KvDomElement* element = &root;
    while (element && output_.state() == KvDomWriting::done) {
      open(*element);
      element = element->firstChild ? descend(*element) : closeUpTo(root, *element);
    }
  }

  const KvDomElement* descend(const KvDomElement& element) {
    ++depth_;
    return element.firstChild;
  }

  /** Closes `element` and the parents that end with it; returns the element to open next, null after the root. */
  const KvDomElement* closeUpTo(const KvDomElement& root, const KvDomElement& last) {
    const KvDomElement* element = &last;
    close(*element);
    while (element != &root && !element->nextSibling) {
      element = element->parent;
      --depth_;
      close(*element);
    }
    return element == &root ? nullptr : element->nextSibling;
  }

  void open(const KvDomElement& element) {
    textUpTo(element.textBegin);
    startLine();
    startTag(element);
    if (!asItIs_ && holdsText(element)) asItIs_ = &element;
    if (!isEmpty(element)) endLine();
  }

  void close(const KvDomElement& element) {
    if (!isEmpty(element)) {
      textUpTo(element.textEnd);
      startLine();
      output_.put("</");
      output_.put(kvdomView(element.name));
      output_.put('>');
    }
    if (asItIs_ == &element) asItIs_ = nullptr;
    endLine();
  }

  void startTag(const KvDomElement& element) {
    output_.put('<');
    output_.put(kvdomView(element.name));
    for (const KvDomAttribute* attribute = element.firstAttribute; attribute; attribute = attribute->next) {
      output_.put(' ');
      output_.put(kvdomView(attribute->name));
      output_.put("=\"");
      output_.putEscaped(kvdomView(attribute->value), Place::attribute);
      output_.put('"');
    }
    output_.put(isEmpty(element) ? "/>" : ">");
  }

  void textUpTo(std::uint32_t end) {
    if (!indents()) output_.putEscaped(tree_.text(textPosition_, end), Place::text);
    textPosition_ = end;
  }

  /** Whether text between the tags of `element` counts: any in a leaf, otherwise more than blanks. */
  bool holdsText(const KvDomElement& element) const {
    if (element.textBegin == element.textEnd) return false;
    if (!element.firstChild) return true;
    std::uint32_t begin = element.textBegin;
    for (const KvDomElement* child = element.firstChild; child; child = child->nextSibling) {
      if (!isBlank(tree_.text(begin, child->textBegin))) return true;
      begin = child->textEnd;
    }
    return !isBlank(tree_.text(begin, element.textEnd));
  }

  bool indents() const { return indent_ && !asItIs_; }

  /** Indentation stops growing at some depth, or the output of a very deep tree would grow with its square. */
  void startLine() {
    if (indents()) output_.put({blanks.data(), 2 * std::min(depth_, deepestIndentation)});
  }

  void endLine() {
    if (indents()) output_.put('\n');
  }

  static constexpr std::size_t deepestIndentation = 100;
  static constexpr auto blanks = [] {
    std::array<char, 2 * deepestIndentation> all{};
    all.fill(' ');
    return all;
  }();

  const KvDomTree& tree_;
  const bool indent_;
  Output output_;
  const KvDomElement* asItIs_ = nullptr;  // the outermost open element that is not indented inside
  std::size_t depth_ = 0;
  std::uint32_t textPosition_ = 0;
};

}  // namespace

KvDomWriting kvdomWrite(const KvDomTree& tree, const KvDomElement& root, bool indent, KvDomSink& sink) noexcept {
  return Writer(tree, indent, sink).write(root);
}

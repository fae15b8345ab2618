// XML documents in memory: the operations of KvDom and KvDomNode over the tree, its reader and its writer.
// Tested by tests/unit/kvdom_read_test.cpp and tests/unit/kvdom_write_test.cpp.
#include <kvxbase/kvboutputfile.h>
#include <kvxdom/kvdom.h>
#include <kvxdom/kvdom_reader.h>
#include <kvxdom/kvdom_text.h>
#include <kvxdom/kvdom_tree.h>
#include <kvxdom/kvdom_writer.h>

#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace {

KvbString nothingToWrite() noexcept { return kvbStringFormat("there is no element to write"); }
KvbString outOfMemory() noexcept { return kvbStringFormat("out of memory"); }

/** Why writing ended early, where `sinkReason` says what the sink has to say. */
KvbString reasonOf(KvDomWriting outcome, const KvbString& sinkReason) noexcept {
  if (outcome != KvDomWriting::forbiddenCharacter) return sinkReason;
  return kvbStringFormat("the document holds a control character, which XML 1.0 forbids");
}

/** The result of `operation`, or `failure` when memory is exhausted. */
template <class Operation, class Result>
Result unlessExhausted(Result failure, Operation operation) noexcept {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return failure;
  }
}

/** Runs `read`, which returns a tree or null with a reason in `*error`, and puts the tree in the place of `*tree`. */
template <class Read>
bool replaceTree(KvDomTree** tree, KvbString* error, Read read) noexcept {
  delete std::exchange(*tree, nullptr);
  error->setNull();
  try {
    *tree = read().release();
  } catch (const std::bad_alloc&) {
    *error = outOfMemory();
  }
  return *tree != nullptr;
}

std::unique_ptr<KvDomTree> newDocument(const KvbString& rootName, KvbString* error) {
  if (!kvdomIsName(kvdomView(rootName))) {
    *error = kvbStringFormat("'%s' is not an XML name", rootName.asCstr());
    return nullptr;
  }
  auto tree = std::make_unique<KvDomTree>();
  tree->addElement(nullptr, rootName, 0);
  return tree;
}

class FileSink final : public KvDomSink {
 public:
  explicit FileSink(KvbOutputFile& file) : file_(file) {}
  bool write(const char* bytes, std::size_t length) noexcept override { return file_.write(bytes, length); }

 private:
  KvbOutputFile& file_;
};

class StringSink final : public KvDomSink {
 public:
  explicit StringSink(KvbString& text) : text_(text) {}
  bool write(const char* bytes, std::size_t length) noexcept override {
    bool failed = false;
    text_.append(bytes, static_cast<unsigned>(length), &failed);
    return !failed;
  }

 private:
  KvbString& text_;
};

}  // namespace

KvbString KvDomNode::getName() const noexcept { return element_ ? element_->name : KvbString(); }

KvbString KvDomNode::getAttributeValue(const KvbString& name) const noexcept {
  if (!element_) return KvbString();
  const std::string_view wanted = kvdomView(name);
  const KvDomAttribute* attribute = element_->firstAttribute;
  while (attribute && kvdomView(attribute->name) != wanted) attribute = attribute->next;
  return attribute ? attribute->value : KvbString();
}

bool KvDomNode::setAttributeValue(const KvbString& name, const KvbString& value) noexcept {
  if (!element_ || !kvdomIsName(kvdomView(name)) || !kvdomIsText(kvdomView(value))) return false;
  KvDomAttribute* last = nullptr;
  for (KvDomAttribute* attribute = element_->firstAttribute; attribute; attribute = attribute->next) {
    if (attribute->name.compare(name, true) == 0) {
      attribute->value = value;
      return true;
    }
    last = attribute;
  }
  return unlessExhausted(false, [&] { return tree_->addAttribute(*element_, last, name, value) != nullptr; });
}

KvDomNode KvDomNode::addChild(const KvbString& name) noexcept {
  if (!element_ || !kvdomIsName(kvdomView(name))) return KvDomNode();
  return unlessExhausted(KvDomNode(),
                         [&] { return KvDomNode(tree_, tree_->addElement(element_, name, element_->textEnd)); });
}

KvDomNode KvDomNode::getFirstChild(bool) const noexcept {
  return element_ ? KvDomNode(tree_, element_->firstChild) : KvDomNode();
}

KvDomNode KvDomNode::getNextSibling(bool) const noexcept {
  return element_ ? KvDomNode(tree_, element_->nextSibling) : KvDomNode();
}

KvbString KvDomNode::getValue(bool) const {
  if (!element_) return KvbString();
  std::string_view text = std::as_const(*tree_).text(element_->textBegin, element_->textEnd);
  return KvbString(text.data(), static_cast<unsigned>(text.size()));
}

void KvDomNode::remove() noexcept {
  if (!element_ || !element_->parent) return;
  tree_->detach(*element_);
  element_ = nullptr;
}

int KvDomNode::getLine() const noexcept { return element_ ? static_cast<int>(element_->line) : 0; }

KvDom::KvDom() noexcept : tree_(nullptr) {}
KvDom::~KvDom() { delete tree_; }

bool KvDom::loadFile(const KvbString& path) noexcept {
  return replaceTree(&tree_, &error_, [&] { return kvdomReadFile(path, &error_); });
}

bool KvDom::loadXML(const KvbString& text) noexcept {
  return replaceTree(&tree_, &error_, [&] { return kvdomReadText(text, &error_); });
}

bool KvDom::startNewDocument(const KvbString& rootName) noexcept {
  return replaceTree(&tree_, &error_, [&] { return newDocument(rootName, &error_); });
}

KvDomNode KvDom::getRoot() const noexcept { return tree_ ? KvDomNode(tree_, tree_->root()) : KvDomNode(); }

bool KvDom::createFile(const KvbString& path, bool indent, const KvDomNode& root) noexcept {
  error_.setNull();
  if (root.null()) {
    error_ = nothingToWrite();
    return false;
  }
  KvbOutputFile file;
  FileSink sink(file);
  KvDomWriting outcome = KvDomWriting::sinkFailed;
  if (file.open(path)) outcome = kvdomWrite(*root.tree_, *root.element_, indent, sink);
  if (outcome == KvDomWriting::done && file.commit()) return true;
  error_ = reasonOf(outcome, file.getErrorMessage());
  return false;
}

KvbString KvDom::createXML(bool indent, const KvDomNode& root) noexcept {
  error_.setNull();
  if (root.null()) {
    error_ = nothingToWrite();
    return KvbString();
  }
  KvbString text;
  StringSink sink(text);
  KvDomWriting outcome = kvdomWrite(*root.tree_, *root.element_, indent, sink);
  if (outcome == KvDomWriting::done) return text;
  error_ = reasonOf(outcome, outOfMemory());
  return KvbString();
}

KvbString KvDom::getErrorMessage() const noexcept { return error_; }

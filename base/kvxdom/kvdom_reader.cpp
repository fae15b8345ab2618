// Reads XML into a tree: the handler of a Xerces-C SAX2 reader. No other code knows Xerces-C, and its exceptions, which
// share no root and are no std::exception, end here.
// Tested by tests/unit/kvdom_read_test.cpp and tests/unit/kvdom_xerces_host_test.cpp.
#include <kvxdom/kvdom_reader.h>
#include <kvxdom/kvdom_text.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <xercesc/internal/ReaderMgr.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax/InputSource.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDValidator.hpp>

namespace {

namespace xercesc = XERCES_CPP_NAMESPACE;

/** Why a document was not read; passes through Xerces-C, which lets foreign exceptions go by. */
struct Refusal {
  KvbString reason;
};

// --- UTF-16 to UTF-8

/** Turns UTF-16 into UTF-8. A pair of surrogates may be split over two calls. */
class Utf8Encoder {
 public:
  static constexpr std::size_t bytesPerUnit = 3;  // at most

  /** Writes `count` units to `out`, which has the room for them, and returns the end of what was written. */
  char* encode(const XMLCh* units, std::size_t count, char* out) {
    const XMLCh* end = units + count;
    while (units != end) {
      for (; isAsciiStride(units, end); units += stride) out = std::copy_n(units, stride, out);
      while (units != end && *units < 0x80) *out++ = static_cast<char>(*units++);
      if (units != end) out = encodeUnit(*units++, out);
    }
    return out;
  }

  /** Whether the first half of a pair still lacks its second half. */
  bool inPair() const { return lead_ != 0; }

 private:
  static constexpr std::size_t stride = 8;

  static bool isAsciiStride(const XMLCh* units, const XMLCh* end) {
    if (end - units < static_cast<std::ptrdiff_t>(stride)) return false;
    unsigned all = 0;
    for (std::size_t i = 0; i < stride; ++i) all |= units[i];
    return all < 0x80;
  }

  /** REQUIRES: a unit beyond ASCII. */
  char* encodeUnit(XMLCh unit, char* out) {
    if (unit < 0x800) {
      *out++ = static_cast<char>(0xC0 | unit >> 6);
      out = putContinuation(unit, out);
    } else if (unit < 0xD800 || unit > 0xDFFF) {
      *out++ = static_cast<char>(0xE0 | unit >> 12);
      out = putContinuation(unit, putContinuation(unit >> 6, out));
    } else if (unit < 0xDC00) {
      lead_ = unit;
    } else {
      out = encodePair(unit, out);
    }
    return out;
  }

  char* encodePair(XMLCh trail, char* out) {
    unsigned character = 0x10000 + ((lead_ - 0xD800u) << 10) + (trail - 0xDC00u);
    lead_ = 0;
    *out++ = static_cast<char>(0xF0 | character >> 18);
    return putContinuation(character, putContinuation(character >> 6, putContinuation(character >> 12, out)));
  }

  static char* putContinuation(unsigned bits, char* out) {
    *out++ = static_cast<char>(0x80 | (bits & 0x3F));
    return out;
  }

  XMLCh lead_ = 0;
};

std::size_t lengthOf(const XMLCh* text) { return std::char_traits<XMLCh>::length(text); }

std::string utf8(const XMLCh* text) {
  std::string result(lengthOf(text) * Utf8Encoder::bytesPerUnit, '\0');
  char* end = Utf8Encoder().encode(text, lengthOf(text), result.data());
  result.resize(static_cast<std::size_t>(end - result.data()));
  return result;
}

// --- Where bytes come from

class ByteSource {
 public:
  /** Fills up to `size` bytes at `to` and returns how many; 0 at the end. */
  virtual std::size_t read(unsigned char* to, std::size_t size) = 0;

 protected:
  ~ByteSource() = default;
};

class FileSource final : public ByteSource {
 public:
  explicit FileSource(const KvbString& path) : path_(path), descriptor_(open(path.asCstr(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) fail();
  }
  ~FileSource() { close(descriptor_); }
  FileSource(const FileSource&) = delete;
  FileSource& operator=(const FileSource&) = delete;

  std::size_t read(unsigned char* to, std::size_t size) override {
    ssize_t count;
    do {
      count = ::read(descriptor_, to, size);
    } while (count < 0 && errno == EINTR);
    if (count < 0) fail();
    return static_cast<std::size_t>(count);
  }

 private:
  [[noreturn]] void fail() const {
    std::string reason = std::generic_category().message(errno);
    throw Refusal{kvbStringFormat("%s: %s", path_.asCstr(), reason.c_str())};
  }

  KvbString path_;
  int descriptor_;
};

class TextSource final : public ByteSource {
 public:
  explicit TextSource(std::string_view text) : rest_(text) {}

  std::size_t read(unsigned char* to, std::size_t size) override {
    std::size_t count = std::min(size, rest_.size());
    std::memcpy(to, rest_.data(), count);
    rest_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view rest_;
};

// --- The handler

class TreeBuilder final : public xercesc::DefaultHandler {
 public:
  TreeBuilder(KvDomTree* tree, const KvDomLimits& limits) : tree_(*tree), text_(tree->text()), limits_(limits) {}

  [[noreturn]] void refuse(const char* reason) const {
    if (!locator_) refuseAt(1, 1, reason);
    refuseAt(locator_->getLineNumber(), locator_->getColumnNumber(), reason);
  }

  /** Refuses the document when there are more than `limit` of `what`. */
  void atMost(std::size_t limit, std::size_t count, const char* what) const {
    if (count > limit) refuse(kvbStringFormat("more than %zu %s", limit, what).asCstr());
  }

  void setDocumentLocator(const xercesc::Locator* const locator) override { locator_ = locator; }

  void startElement(const XMLCh* const, const XMLCh* const, const XMLCh* const name,
                    const xercesc::Attributes& attributes) override {
    atMost(limits_.depth, ++depth_, "elements inside each other");
    atMost(limits_.elements, tree_.elementCount() + 1, "elements");
    atMost(limits_.attributes, attributes.getLength(), "attributes on an element");
    current_ = tree_.addElement(current_, shared(limited(name, "bytes in a name")), text_.size());
    current_->line = static_cast<std::uint32_t>(locator_->getLineNumber());
    addAttributes(attributes);
    runBytes_ = 0;
  }

  void endElement(const XMLCh* const, const XMLCh* const, const XMLCh* const) override {
    current_->textEnd = static_cast<std::uint32_t>(text_.size());
    current_ = current_->parent;
    --depth_;
    runBytes_ = 0;
  }

  void characters(const XMLCh* const units, const XMLSize_t count) override {
    for (XMLSize_t done = 0; done < count; done += blockUnits) {
      addText(scratch(units + done, std::min(blockUnits, count - done)));
    }
  }

  /** Xerces-C takes a null character behind the root for the end. */
  void endDocument() override {
    const auto& readers = static_cast<const xercesc::ReaderMgr&>(*locator_);
    if (readers.getCurrentReader()->charsLeftInBuffer() > 0) refuse("a null character is not accepted");
  }

  void error(const xercesc::SAXParseException& fault) override { fatalError(fault); }

  void fatalError(const xercesc::SAXParseException& fault) override {
    refuseAt(fault.getLineNumber(), fault.getColumnNumber(), utf8(fault.getMessage()).c_str());
  }

 private:
  static constexpr XMLSize_t blockUnits = 4096;  // of text turned into UTF-8 at once

  [[noreturn]] static void refuseAt(XMLFileLoc line, XMLFileLoc column, const char* reason) {
    throw Refusal{kvbStringFormat("line %lu, column %lu: %s", static_cast<unsigned long>(line),
                                  static_cast<unsigned long>(column), reason)};
  }

  void addAttributes(const xercesc::Attributes& attributes) {
    KvDomAttribute* last = nullptr;
    for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
      KvbString name = shared(limited(attributes.getQName(i), "bytes in a name"));
      const KvbString& value = shared(limited(attributes.getValue(i), "bytes in an attribute value"));
      hold(static_cast<std::size_t>(name.length() + value.length()) + std::strlen(" =''"));
      last = tree_.addAttribute(*current_, last, std::move(name), value);
    }
  }

  void addText(std::string_view text) {
    runBytes_ += text.size();
    atMost(limits_.textBytes, runBytes_, "bytes between two tags");
    hold(text.size());
    text_.append(text);
  }

  /** Counts what the tree holds, since attribute defaults let a small document grow without bounds. */
  void hold(std::size_t bytes) {
    heldBytes_ += bytes;
    atMost(limits_.documentBytes, heldBytes_, "bytes in the document");
  }

  /** The text in UTF-8, valid until the next call. One that must be too long is not even converted. */
  std::string_view limited(const XMLCh* units, const char* what) {
    std::size_t count = lengthOf(units);
    atMost(limits_.textBytes, count, what);
    std::string_view text = scratch(units, count);
    atMost(limits_.textBytes, text.size(), what);
    // Xerces-C finds half a character everywhere but at the end of a value.
    if (encoder_.inPair()) refuse("half a surrogate pair is not accepted");
    return text;
  }

  /** The text in UTF-8, valid until the next call. */
  std::string_view scratch(const XMLCh* units, std::size_t count) {
    if (scratch_.size() < count * Utf8Encoder::bytesPerUnit) scratch_.resize(count * Utf8Encoder::bytesPerUnit);
    char* end = encoder_.encode(units, count, scratch_.data());
    return {scratch_.data(), static_cast<std::size_t>(end - scratch_.data())};
  }

  /** A text that is shared with an earlier one like it, when that is among the last of its kind. */
  const KvbString& shared(std::string_view text) {
    KvbString& recent = recent_[std::hash<std::string_view>()(text) % recent_.size()];
    bool isLike = !recent.isNull() && kvdomView(recent) == text;
    if (!isLike) recent = KvbString(text.data(), static_cast<unsigned>(text.size()));
    return recent;
  }

  KvDomTree& tree_;
  std::string& text_;
  const KvDomLimits& limits_;
  const xercesc::Locator* locator_ = nullptr;
  KvDomElement* current_ = nullptr;
  std::size_t depth_ = 0;
  std::size_t runBytes_ = 0;
  std::size_t heldBytes_ = 0;
  Utf8Encoder encoder_;
  std::string scratch_;
  std::array<KvbString, 4096> recent_;
};

// --- What Xerces-C needs to read from a ByteSource

class CountedStream final : public xercesc::BinInputStream {
 public:
  CountedStream(ByteSource& source, const TreeBuilder& builder, std::size_t limit)
      : source_(source), builder_(builder), limit_(limit) {}

  XMLFilePos curPos() const override { return count_; }
  const XMLCh* getContentType() const override { return nullptr; }

  XMLSize_t readBytes(XMLByte* const to, const XMLSize_t size) override {
    std::size_t count = source_.read(to, size);
    if (count == 0) return endLastCharacter(to);
    last_ = to[count - 1];
    count_ += count;
    builder_.atMost(limit_, count_, "bytes in the document");
    return count;
  }

 private:
  /**
   * Xerces-C passes over a character that is cut short by the end. A line break behind it makes it a fault; behind a
   * whole character, which can only be a line break of XML 1.1, it means nothing.
   */
  XMLSize_t endLastCharacter(XMLByte* to) {
    if (last_ < 0x80) return 0;
    *to = last_ = '\n';
    return 1;
  }

  ByteSource& source_;
  const TreeBuilder& builder_;
  std::size_t limit_;
  std::size_t count_ = 0;
  XMLByte last_ = 0;
};

/** Makes the stream of a document. The bytes stay the caller's: Xerces-C leaks its stream when memory runs out. */
class DocumentSource final : public xercesc::InputSource {
 public:
  DocumentSource(ByteSource& source, const TreeBuilder& builder, const KvDomLimits& limits)
      : source_(source), builder_(builder), limit_(limits.documentBytes) {}

  xercesc::BinInputStream* makeStream() const override { return new CountedStream(source_, builder_, limit_); }

 private:
  ByteSource& source_;
  const TreeBuilder& builder_;
  std::size_t limit_;
};

/** Never validates: Xerces-C lets nobody but a validator at its scanner. */
class ScannerAccess final : public xercesc::DTDValidator {
 public:
  using DTDValidator::getScanner;
};

/** A SAX2 reader that opens nothing but the document and knows no entities but the predefined ones. */
class DocumentReader final : public xercesc::SAX2XMLReaderImpl {
 public:
  explicit DocumentReader(TreeBuilder* builder) : builder_(*builder) {
    setFeature(xercesc::XMLUni::fgSAX2CoreNameSpaces, false);
    setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
    setFeature(xercesc::XMLUni::fgXercesSchema, false);
    setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
    setFeature(xercesc::XMLUni::fgXercesDisableDefaultEntityResolution, true);
    setFeature(xercesc::XMLUni::fgXercesCalculateSrcOfs, false);
    setContentHandler(builder);
    setDeclarationHandler(builder);
    setErrorHandler(builder);
    setValidator(&access_);
  }

  /** Where the unread external subset might declare an entity, Xerces-C drops references to it without a word. */
  void doctypeDecl(const xercesc::DTDElementDecl&, const XMLCh* const, const XMLCh* const, const bool,
                   const bool) override {
    access_.getScanner()->setHasNoDTD(true);
  }

  /** The handlers of SAX2 do not hear of a second declaration of a name, of the predefined ones for instance. */
  void entityDecl(const xercesc::DTDEntityDecl& declaration, const bool, const bool) override {
    std::string name = utf8(declaration.getName());
    builder_.refuse(kvbStringFormat("entity declarations are not accepted ('%s')", name.c_str()).asCstr());
  }

 private:
  const TreeBuilder& builder_;
  ScannerAccess access_;  // the reader says that it adopts its validator, yet never deletes it
};

// --- Xerces-C as a whole

/** Xerces-C ends the process when it cannot begin; this makes it a failure to read. */
class PanicIsFailure final : public xercesc::PanicHandler {
 public:
  void panic(const PanicReasons) override { throw std::bad_alloc(); }
};

/**
 * Begins Xerces-C on first use and ends it when the library goes. Xerces-C counts beginnings and ends itself, so a host
 * that uses it too is not disturbed, but it counts without a lock; this holds one.
 */
class XercesPlatform {
 public:
  XercesPlatform() noexcept = default;
  /** Where another thread still reads at the end of the process, Xerces-C stays. */
  ~XercesPlatform() {
    std::lock_guard lock(mutex_);
    if (begun_ && readers_ == 0) xercesc::XMLPlatformUtils::Terminate();
  }
  XercesPlatform(const XercesPlatform&) = delete;
  XercesPlatform& operator=(const XercesPlatform&) = delete;

  void enter() {
    std::lock_guard lock(mutex_);
    if (!begun_) begin();
    ++readers_;
  }

  void leave() {
    std::lock_guard lock(mutex_);
    --readers_;
  }

 private:
  /**
   * Xerces-C cannot take back a beginning that failed half-way, so the memory for it is tried first, and a failure even
   * so is final.
   */
  void begin() {
    if (failed_) throw std::bad_alloc();
    ::operator delete(::operator new(memoryToBegin));
    failed_ = true;
    xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr, &panic_);
    failed_ = false;
    begun_ = true;
  }

  static constexpr std::size_t memoryToBegin = 1 << 20;

  std::mutex mutex_;
  PanicIsFailure panic_;
  bool begun_ = false;
  bool failed_ = false;
  int readers_ = 0;
};

XercesPlatform platform;

class XercesUse {
 public:
  XercesUse() { platform.enter(); }
  ~XercesUse() { platform.leave(); }
  XercesUse(const XercesUse&) = delete;
  XercesUse& operator=(const XercesUse&) = delete;
};

std::unique_ptr<KvDomTree> parse(ByteSource& bytes, const XMLCh* encoding, const KvDomLimits& limits) {
  XercesUse use;
  auto tree = std::make_unique<KvDomTree>();
  TreeBuilder builder(tree.get(), limits);
  DocumentSource document(bytes, builder, limits);
  document.setEncoding(encoding);
  DocumentReader(&builder).parse(document);
  return tree;
}

/** Runs `read` and turns what ends it early into a null result with its reason. */
template <class Read>
std::unique_ptr<KvDomTree> readOrExplain(KvbString* error, Read read) {
  try {
    return read();
  } catch (const Refusal& refusal) {
    *error = refusal.reason;
  } catch (const xercesc::XMLException& fault) {
    error->assign(utf8(fault.getMessage()).c_str());
  } catch (const xercesc::SAXException& fault) {
    error->assign(utf8(fault.getMessage()).c_str());
  } catch (const xercesc::OutOfMemoryException&) {
    throw std::bad_alloc();
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<KvDomTree> kvdomReadFile(const KvbString& path, KvbString* error, const KvDomLimits& limits) {
  return readOrExplain(error, [&] {
    FileSource file(path);
    return parse(file, nullptr, limits);
  });
}

std::unique_ptr<KvDomTree> kvdomReadText(const KvbString& text, KvbString* error, const KvDomLimits& limits) {
  return readOrExplain(error, [&] {
    TextSource source(kvdomView(text));
    return parse(source, xercesc::XMLUni::fgUTF8EncodingString, limits);
  });
}

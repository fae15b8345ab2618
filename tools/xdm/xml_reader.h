// A push parser for XML of any size, over expat.
#ifndef XDM_XML_READER_H
#define XDM_XML_READER_H

#include <expat.h>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

/** A name as the document means it. */
struct XmlName {
  std::string_view uri;
  std::string_view local;
};

/**
 * Reads one document and hands its events to the operations that a derived class overrides. They may throw: the
 * exception comes out of read. Nothing outside the document is opened.
 */
class XmlReader {
 public:
  XmlReader(const XmlReader&) = delete;
  XmlReader& operator=(const XmlReader&) = delete;
  virtual ~XmlReader() = default;

  /** Reads `file` from its position to the end, or until stop. False when it is not well-formed: see problem. */
  bool read(std::FILE* file);

  /** Why read gave false, with the line. */
  const std::string& problem() const { return problem_; }

 protected:
  /**
   * A prolog is read with names as written and in any encoding, byte by byte if need be; a document with namespaces and
   * in the encodings that expat knows.
   */
  enum class Kind { prolog, document };
  explicit XmlReader(Kind kind);

  /** The bytes that are read next; their events follow. */
  virtual void onBytes(std::string_view) {}
  virtual void onStart(const XmlName&) {}
  virtual void onEnd() {}
  virtual void onText(std::string_view) {}
  /** An external subset (`systemId` of the document type declaration). */
  virtual void onExternalDtd(std::string_view /*systemId*/) {}
  /** A declaration of an entity that lies outside the document. */
  virtual void onExternalEntity(std::string_view /*name*/, std::string_view /*systemId*/) {}

  void stop();
  /** Where the event at hand begins and ends in the document, in bytes. */
  std::uintmax_t eventStart() const;
  std::uintmax_t eventEnd() const;
  unsigned long line() const { return XML_GetCurrentLineNumber(parser_.get()); }

 private:
  struct Handlers;
  struct ParserFree {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  template <typename Event>
  void guarded(Event event);
  bool feed(std::string_view piece, bool last);

  std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserFree> parser_;
  std::exception_ptr thrown_;
  bool stopped_ = false;
  std::string problem_;
};

#endif

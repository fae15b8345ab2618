// Query text that grows by appends, and the head that both generated queries share.
// Tested by tests/unit/kvxdmxqy_text_test.cpp.
#ifndef KVXDM_SRC_KVXDMXQY_TEXT_H
#define KVXDM_SRC_KVXDMXQY_TEXT_H

#include <string_view>

#include "kvxdmtext.h"

/**
 * Appends to a text. The first append that finds no memory raises the flag, and everything appended from then on is
 * dropped; so a generator only writes and asks for the flag once, at the end. Several texts can share one flag.
 */
class QueryText {
 public:
  QueryText(KvbString& text, bool& failed) noexcept : text_(text), failed_(failed) {}

  QueryText& operator<<(std::string_view piece) noexcept {
    if (!failed_) text_.append(piece.data(), static_cast<unsigned>(piece.size()), &failed_);
    return *this;
  }
  QueryText& operator<<(const KvbString& piece) noexcept { return *this << view(piece); }

  unsigned length() const noexcept { return static_cast<unsigned>(text_.length()); }
  /** Takes back what was appended since the text had this length. */
  void truncate(unsigned length) { text_.truncate(length); }

  void fail() noexcept { failed_ = true; }
  bool failed() const noexcept { return failed_; }

 private:
  KvbString& text_;
  bool& failed_;
};

/** Begins a query. Without `streaming` the processor is told not to stream. */
inline void writeQueryHead(QueryText& query, const KvbString& namespaceProlog, bool streaming) noexcept {
  query << "xquery version \"1.0\";\ndeclare boundary-space preserve;\n" << namespaceProlog;
  if (!streaming) query << "declare option ddtek:xml-streaming \"no\";\n";
}

#endif

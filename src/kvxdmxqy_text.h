// Query text that grows by appends, and the head that both generated queries share.
// Tested by tests/unit/kvxdmxqy_text_test.cpp.
#ifndef KVXDM_SRC_KVXDMXQY_TEXT_H
#define KVXDM_SRC_KVXDMXQY_TEXT_H

#include <cstddef>
#include <initializer_list>
#include <limits>
#include <new>
#include <string>
#include <string_view>

#include "kvxdmtext.h"

/** Appends to a text. Throws std::bad_alloc, which the operation that asks for the query turns into message 29. */
class QueryText {
 public:
  QueryText& operator<<(std::string_view piece) {
    text_ += piece;
    return *this;
  }
  QueryText& operator<<(const KvbString& piece) { return *this << view(piece); }

  std::string_view text() const noexcept { return text_; }
  std::size_t length() const noexcept { return text_.size(); }
  bool empty() const noexcept { return text_.empty(); }

  /** Takes back what was appended since the text had this length. */
  void truncate(std::size_t length) noexcept { text_.erase(length); }

 private:
  std::string text_;
};

/** One string of all texts. Throws std::bad_alloc, also when they are longer than a string can be. */
inline KvbString joined(std::initializer_list<std::string_view> texts) {
  std::size_t length = 0;
  for (std::string_view text : texts) length += text.size();
  bool failed = length > std::numeric_limits<int>::max();
  KvbString all;
  for (std::string_view text : texts) {
    if (!failed) all.append(text.data(), static_cast<unsigned>(text.size()), &failed);
  }
  if (failed) throw std::bad_alloc();
  return all;
}

/** Begins a query. Without `streaming` the processor is told not to stream. */
inline void writeQueryHead(QueryText& query, std::string_view namespaceProlog, bool streaming) {
  query << "xquery version \"1.0\";\ndeclare boundary-space preserve;\n" << namespaceProlog;
  if (!streaming) query << "declare option ddtek:xml-streaming \"no\";\n";
}

#endif

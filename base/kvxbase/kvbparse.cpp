// Attribute strings: name=value pairs in one text.
// Tested by tests/unit/kvbparse_test.cpp.
#include <kvxbase/kvbparse.h>

#include <memory>
#include <new>
#include <vector>

#include <kvxbase/kvbpairs.h>

namespace {

struct Pair {
  KvbString name;
  KvbString value;
};

KvbString toString(std::string_view text) { return KvbString(text.data(), static_cast<unsigned>(text.size())); }

KvbString reasonOf(const KvbPairReader& reader) noexcept {
  return kvbStringFormat("%s at position %zu", reader.fault(), reader.position());
}

}  // namespace

struct KvbParse::Pairs {
  std::vector<Pair> list;
};

KvbParse::KvbParse() noexcept : pairs_(nullptr) {}

KvbParse::~KvbParse() { delete pairs_; }

bool KvbParse::parse(const KvbString& text, char separator) noexcept {
  delete pairs_;
  pairs_ = nullptr;
  error_.setNull();
  try {
    auto pairs = std::make_unique<Pairs>();
    std::string_view view(text.asCstr(), static_cast<std::size_t>(text.length()));
    KvbPairReader reader(view, separator, KvbPairReader::Names::needValue);
    while (reader.next()) pairs->list.push_back({toString(reader.name()), toString(reader.value())});
    if (reader.fault()) {
      error_ = reasonOf(reader);
      return false;
    }
    pairs_ = pairs.release();
    return true;
  } catch (const std::bad_alloc&) {
    error_ = kvbStringFormat("out of memory");
    return false;
  }
}

int KvbParse::getAttributeCount() const noexcept { return pairs_ ? static_cast<int>(pairs_->list.size()) : 0; }

bool KvbParse::getAttribute(int index, KvbString* name, KvbString* value) const noexcept {
  if (index < 0 || index >= getAttributeCount()) return false;
  const Pair& pair = pairs_->list[static_cast<std::size_t>(index)];
  *name = pair.name;
  *value = pair.value;
  return true;
}

KvbString KvbParse::getErrorMessage() const noexcept { return error_; }

// How the XMLMap reader looks at the map: child elements by name, attributes, texts, and how it reports what is wrong.
#ifndef KVXDM_SRC_KVXDMMAP_DOM_H
#define KVXDM_SRC_KVXDMMAP_DOM_H

#include <iterator>
#include <string_view>

#include <kvxdom/kvdom.h>

#include "kvxdmmain.h"
#include "kvxdmtext.h"

namespace xmlmap {

constexpr char unit[] = "kvxdmmap";

/** The names of a map's attributes as the DOM service takes them, made once. */
struct AttributeNames {
  const KvbString id{"id", true};
  const KvbString name{"name", true};
  const KvbString prefix{"prefix", true};
  const KvbString retain{"retain", true};
  const KvbString syntax{"syntax", true};
  const KvbString value{"value", true};
  const KvbString version{"version", true};
};

/** Throws std::bad_alloc when memory is exhausted at the first call; a later call tries again. */
inline const AttributeNames& attributeNames() {
  static const AttributeNames names;
  return names;
}

inline bool isNamed(const KvDomNode& node, std::string_view name) { return view(node.getName()) == name; }

/** The child elements of `parent` called `name`, in document order; for range-based loops. */
class ChildrenNamed {
 public:
  class Iterator {
   public:
    Iterator(const KvDomNode& node, std::string_view name) : node_(node), name_(name) { skipOthers(); }
    const KvDomNode& operator*() const { return node_; }
    Iterator& operator++() {
      node_ = node_.getNextSibling(false);
      skipOthers();
      return *this;
    }
    bool operator==(std::default_sentinel_t) const { return node_.null(); }

   private:
    void skipOthers() {
      while (!node_.null() && !isNamed(node_, name_)) node_ = node_.getNextSibling(false);
    }

    KvDomNode node_;
    std::string_view name_;
  };

  ChildrenNamed(const KvDomNode& parent, std::string_view name) : parent_(parent), name_(name) {}
  Iterator begin() const { return {parent_.getFirstChild(false), name_}; }
  std::default_sentinel_t end() const { return {}; }

 private:
  KvDomNode parent_;
  std::string_view name_;
};

/** The first child element called `name`; a null handle without one. */
inline KvDomNode firstChildNamed(const KvDomNode& parent, std::string_view name) {
  return *ChildrenNamed(parent, name).begin();
}

inline KvbString trimmedText(const KvDomNode& node) {
  KvbString text = node.getValue(false);
  text.trim(true, true);
  return text;
}

inline bool isKeyword(const KvbString& text, const char* keyword) { return text.compare(keyword, false) == 0; }

/** Makes catalogue message `number` the main object's error message; false, for the failing step to return. */
template <class... Arguments>
bool fail(XDMMainImpl* main, int line, int number, const Arguments&... arguments) {
  main->setErrorMessage(message(unit, line, number, arguments...));
  return false;
}

}  // namespace xmlmap

#endif

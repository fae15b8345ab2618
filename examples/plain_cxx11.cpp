// A host for a compiler that stays at C++11: keeps a model as text, as an application does in its own files, and makes
// a second main object from it. Compiled as C++11 without extensions; what it prints is compared with plain_cxx11.txt.
#include <cstdio>

#include <kvxdm/kvxdm.h>

namespace {

const char document[] =
    "<xdm version=\"1.0\"><element name=\"orders\"><element name=\"order\" decides=\"true\">"
    "<attribute name=\"id\"/><element name=\"customer\"/></element></element></xdm>";

XDMMainPtr load(const KvbString& text, KvbString* error) {
  XDMMainPtr model(kvxdmCreateMain(0));
  if (!model->loadFromXML(text, error)) model.reset();
  return model;
}

int fail(const KvbString& error) {
  std::fprintf(stderr, "plain_cxx11: %s\n", error.asCstr());
  return 1;
}

}  // namespace

int main() {
  KvbString error;
  const XDMMainPtr first = load(KvbString(document, true), &error);
  if (!first) return fail(error);
  KvbString saved;
  if (!first->saveToXML(&saved, &error)) return fail(error);

  const XDMMainPtr second = load(saved, &error);
  if (!second) return fail(error);
  KvbString savedAgain;
  if (!second->saveToXML(&savedAgain, &error)) return fail(error);

  std::printf("%s\n%s", kvx_build_info, saved.asCstr());
  std::printf("The second model gives %s text.\n", saved.compare(savedAgain, true) == 0 ? "the same" : "another");
  return 0;
}

// The shapes of documents and maps that the workloads share.
#ifndef KVXDM_BENCH_SHAPES_H
#define KVXDM_BENCH_SHAPES_H

#include <functional>
#include <string>
#include <vector>

#include "workloads.h"

struct DocumentShape {
  std::string name;
  std::string meaning;
  std::vector<long> sizes;
  Document (*document)(long elements);
};

inline std::vector<DocumentShape> documentShapes() {
  return {{"bushy", "ten children an element", {10'000, 100'000, 1'000'000}, bushyDocument},
          {"wide", "all elements under one", {10'000, 100'000, 1'000'000}, wideDocument},
          {"deep", "each element inside the one before", {99, 999}, deepDocument}};
}

struct MapShape {
  std::string name;
  std::string meaning;
  std::vector<long> sizes;
  std::function<std::string(long size)> map;
};

inline const std::vector<long> mapSizes = {100, 1'000, 10'000, 100'000};

inline std::vector<MapShape> mapShapes() {
  return {{"wide", "columns side by side in the row", mapSizes, [](long n) { return wideMap(n, PathSyntax::plain); }},
          {"nested", "columns five levels deep, most outside the row", mapSizes,
           [](long n) { return nestedMap(n, PathSyntax::plain); }},
          {"wide-extended", "columns side by side, extended paths", mapSizes,
           [](long n) { return wideMap(n, PathSyntax::extended); }},
          {"nested-extended", "columns five levels deep, extended paths", mapSizes,
           [](long n) { return nestedMap(n, PathSyntax::extended); }},
          {"deep", "one column, so many levels deep", {99, 999}, deepMap}};
}

#endif

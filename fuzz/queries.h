// Both generators on a model, and what must hold for their texts.
#ifndef KVXDM_FUZZ_QUERIES_H
#define KVXDM_FUZZ_QUERIES_H

#include <string>

#include "models.h"

/** The text of a query, or of the failure. Exactly one of the two is there. */
inline std::string textOf(const KvbString& query, const KvbString& error) {
  EXPECT_EQ(isEmpty(query), !isEmpty(error)) << str(query) << str(error);
  return str(query) + str(error);
}

/** The query from rows with the choices in the bits of `choices`. */
inline std::string queryFromRows(XDMMain& main, unsigned choices) {
  KvbString error;
  const KvbString query = main.genXQueryFromColumns(choices & 1, choices & 2, &error);
  return textOf(query, error);
}

/** The query to rows with the choices in the bits of `choices`. */
inline std::string queryToRows(XDMMain& main, unsigned choices) {
  KvbString error;
  const KvbString query = main.genXQueryToColumns(choices & 1, choices & 2, choices & 4, choices & 8, &error);
  return textOf(query, error);
}

/** Both queries, which a second call writes again. */
inline std::string queries(XDMMain& main, unsigned choices) {
  const std::string fromRows = queryFromRows(main, choices);
  const std::string toRows = queryToRows(main, choices);
  EXPECT_EQ(queryFromRows(main, choices), fromRows);
  EXPECT_EQ(queryToRows(main, choices), toRows);
  return fromRows + toRows;
}

#endif

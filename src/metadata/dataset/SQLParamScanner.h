// Finds `:name` parameter placeholders in SQL text and rewrites them into the
// markers a driver takes. Statements of the engine always name their
// parameters (`where c.relname = :ObjectName`); each adapter translates them:
// libpq to `$1`, MariaDB and ODBC to `?`, SQLite to `?1`.
//
// What is not a placeholder: text in string literals ('..', E'..' with
// backslash escapes, $tag$..$tag$), in quoted identifiers ("..", `..`,
// [..]), in comments (-- to the end of the line, /* .. */), a `::` cast and
// `:=`. A name starts with a letter or `_` (so `:1` and `a[1:2]` are left
// alone) and goes on with letters, digits, `_` and `$`; `:"any text"` is a
// quoted name.
#pragma once

#include <cstddef>
#include <vector>

#include "support/WideString.h"

namespace mv {

struct TmvSQLParamScanOptions {
  // '..\'..' escapes in every string literal (MySQL's default).
  bool BackslashEscapes = false;
  // # starts a comment to the end of the line (MySQL).
  bool HashComments = false;
  // [..] is a quoted identifier (SQL Server, Access); off where brackets are
  // array subscripts that may hold parameters (PostgreSQL).
  bool BracketIdentifiers = true;
  // $tag$..$tag$ is a string (PostgreSQL).
  bool DollarQuotes = true;
};

// One placeholder: the name without colon or quotes, and where the whole
// placeholder stands (colon included), in UTF-16 code units.
struct TmvSQLParamRef {
  WideString Name;
  size_t Pos = 0;
  size_t Length = 0;
};

// The placeholders of `sql`, in text order (a name may repeat).
std::vector<TmvSQLParamRef> FindSQLParams(WideStringView sql, const TmvSQLParamScanOptions& options = {});

enum class TmvParamMarker {
  pmQuestion,          // `?` for each occurrence (MariaDB, ODBC)
  pmDollar,            // `$n`, one number per distinct name (libpq)
  pmQuestionNumbered,  // `?n`, one number per distinct name (SQLite)
};

struct TmvTranslatedSQL {
  WideString Text;
  // The parameter behind each marker: with pmQuestion one entry per
  // occurrence in text order; with the numbered markers entry n-1 is the
  // name of marker n. Names that differ only in case are one parameter.
  std::vector<WideString> Names;
};

TmvTranslatedSQL TranslateSQLParams(WideStringView sql, TmvParamMarker marker,
                                    const TmvSQLParamScanOptions& options = {});

}  // namespace mv

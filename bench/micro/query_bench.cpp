// One query over 32,767 names, at most 50 of them: the servent's index, a plain scan of names kept
// upper-cased, and SQLite's full-text search by groups of three letters. Every contender must give
// the scan's names in the scan's order before it is timed. Each query is a benchmark of its own, so
// that the middle one of the set can be told.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "micro/made_names.h"
#include "share/query_answering.h"
#include "share/shared_index.h"

namespace velmora::bench {
namespace {

constexpr std::size_t kNames = 32767;
constexpr std::size_t kLimit = 50;

// Common and rare words, several words, nothing found, words too short for groups, no words.
constexpr std::array<std::string_view, 20> kQueries = {"marilo",
                                                       "mp3",
                                                       "Sanker ogg",
                                                       "nightver",
                                                       "00417.mp3",
                                                       "31999",
                                                       "gretishaten",
                                                       "Koverda Wopla",
                                                       "zyzyzyzy",
                                                       "nowhere to be found",
                                                       "(1987)",
                                                       "ver da tennight",
                                                       "ARISTUM txt",
                                                       "elor lo ri ten",
                                                       "plaCI jpg",
                                                       "night (1969)",
                                                       "x",
                                                       "lo 77",
                                                       "tennighttennight",
                                                       ""};

const std::vector<std::string>& names() {
  static const std::vector<std::string> made = MadeNames().some(kNames);
  return made;
}

const NameIndex& index_of_names() {
  static const NameIndex index(std::vector<std::string_view>(names().begin(), names().end()));
  return index;
}

const std::vector<std::string>& upper_names() {
  static const std::vector<std::string> upper = [] {
    std::vector<std::string> made;
    for (const std::string& name : names()) {
      made.push_back(name);
      make_upper_case(made.back());
    }
    return made;
  }();
  return upper;
}

std::vector<std::size_t> scanned(std::string_view query) {
  SearchWords cut;
  const auto words = cut.of(query);
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < upper_names().size() && found.size() < kLimit; ++i) {
    bool all = true;
    for (const std::string_view word : words) {
      all = all && upper_names()[i].find(word) != std::string::npos;
    }
    if (all) found.push_back(i + 1);
  }
  return found;
}

// The name, the number as the row; words shorter than a group are looked for with LIKE.
class SqliteNames {
 public:
  SqliteNames() {
    check(sqlite3_open(":memory:", &database_));
    run("CREATE VIRTUAL TABLE names USING fts5(name, tokenize='trigram')");
    run("BEGIN");
    sqlite3_stmt* insert = prepare("INSERT INTO names(rowid, name) VALUES(?1, ?2)");
    for (std::size_t i = 0; i < names().size(); ++i) {
      sqlite3_bind_int64(insert, 1, static_cast<sqlite3_int64>(i) + 1);
      bind(insert, 2, names()[i]);
      sqlite3_step(insert);
      sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    run("COMMIT");
    run("INSERT INTO names(names) VALUES('optimize')");
  }
  ~SqliteNames() { sqlite3_close(database_); }
  SqliteNames(const SqliteNames&) = delete;
  SqliteNames& operator=(const SqliteNames&) = delete;

  // Prepared once a query, which favours it.
  sqlite3_stmt* prepare_query(std::string_view query) {
    std::string match;
    std::vector<std::string> likes;
    SearchWords cut;
    for (const std::string_view found : cut.of(query)) {
      const std::string word(found);
      if (word.size() >= 3) {
        match += (match.empty() ? "\"" : " AND \"") + word + "\"";
      } else if (!word.empty()) {
        likes.push_back("%" + word + "%");
      }
    }
    std::string sql = "SELECT rowid FROM names WHERE 1";
    if (!match.empty()) sql += " AND name MATCH ?1";
    for (std::size_t i = 0; i < likes.size(); ++i) {
      sql += " AND name LIKE ?" + std::to_string(i + 2);
    }
    sql += " ORDER BY rowid LIMIT " + std::to_string(kLimit);
    sqlite3_stmt* statement = prepare(sql);
    if (!match.empty()) bind(statement, 1, match);
    for (std::size_t i = 0; i < likes.size(); ++i) {
      bind(statement, static_cast<int>(i) + 2, likes[i]);
    }
    return statement;
  }

  static std::vector<std::size_t> rows(sqlite3_stmt* statement) {
    std::vector<std::size_t> found;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      found.push_back(static_cast<std::size_t>(sqlite3_column_int64(statement, 0)));
    }
    sqlite3_reset(statement);
    return found;
  }

 private:
  static void check(int result) {
    if (result != SQLITE_OK) throw std::runtime_error(sqlite3_errstr(result));
  }
  static void bind(sqlite3_stmt* statement, int place, const std::string& text) {
    check(sqlite3_bind_text(statement, place, text.data(), static_cast<int>(text.size()),
                            SQLITE_TRANSIENT));
  }
  void run(const char* sql) { check(sqlite3_exec(database_, sql, nullptr, nullptr, nullptr)); }
  sqlite3_stmt* prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr));
    return statement;
  }

  sqlite3* database_ = nullptr;
};

std::string_view query_of(benchmark::State& state) {
  const std::string_view query = kQueries[static_cast<std::size_t>(state.range(0))];
  state.SetLabel("\"" + std::string(query) + "\"");
  return query;
}

void velmora_index(benchmark::State& state) {
  const std::string_view query = query_of(state);
  const auto answer = [&] {
    SearchWords cut;
    return index_of_names().find(cut.of(query), kLimit).names;
  };
  if (answer() != scanned(query)) state.SkipWithError("other names than the scan's");
  for (auto _ : state) benchmark::DoNotOptimize(answer());
}

void plain_scan(benchmark::State& state) {
  const std::string_view query = query_of(state);
  for (auto _ : state) benchmark::DoNotOptimize(scanned(query));
}

void sqlite_fts5(benchmark::State& state) {
  static SqliteNames sqlite;
  const std::string_view query = query_of(state);
  sqlite3_stmt* statement = sqlite.prepare_query(query);
  if (SqliteNames::rows(statement) != scanned(query)) {
    state.SkipWithError("other names than the scan's");
  }
  for (auto _ : state) benchmark::DoNotOptimize(SqliteNames::rows(statement));
  sqlite3_finalize(statement);
}

constexpr int kLast = static_cast<int>(kQueries.size()) - 1;
BENCHMARK(velmora_index)->DenseRange(0, kLast)->MinTime(0.02)->Unit(benchmark::kMicrosecond);
BENCHMARK(plain_scan)->DenseRange(0, kLast)->MinTime(0.02)->Unit(benchmark::kMicrosecond);
BENCHMARK(sqlite_fts5)->DenseRange(0, kLast)->MinTime(0.02)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace velmora::bench

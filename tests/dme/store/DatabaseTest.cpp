#include "dme/store/Database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <limits>
#include <map>
#include <tuple>
#include <type_traits>

#include "tests/dme/support/TempDirectory.h"

namespace dme {
namespace {

static_assert(!std::is_copy_constructible_v<Statement>);
static_assert(!std::is_copy_constructible_v<Connection>);
static_assert(!std::is_copy_constructible_v<Database>);
static_assert(std::is_move_constructible_v<Database>);

using Row = std::tuple<std::string, std::string, Cell>;

std::vector<Row> rowsOf(Database& database) {
  std::vector<Row> rows;
  const Result<void> loaded = database.load(
      [&](std::string_view dn, std::string_view name) {
        rows.emplace_back(std::string(dn), "class " + std::string(name), Cell());
      },
      [&](std::string_view dn, std::string_view name, const Cell& value) {
        rows.emplace_back(std::string(dn), std::string(name), value);
      });
  EXPECT_TRUE(loaded);
  return rows;
}

using Values = std::map<std::string, Cell>;

/// An object that comes into being with these values.
void add(ChangeSet& changes, const std::string& dn, const Values& values = {}) {
  changes.create(dn, "slot");
  for (const auto& [name, value] : values) {
    changes.set(dn, name, value);
  }
}
ChangeSet object(const std::string& dn, const Values& values = {}) {
  ChangeSet changes;
  add(changes, dn, values);
  return changes;
}
ChangeSet property(const std::string& dn, const std::string& name, Cell value) {
  ChangeSet changes;
  changes.set(dn, name, std::move(value));
  return changes;
}

TEST(Database, EmptyDirectory_GetsAnEmptyDatabaseReadableByItsOwnerOnly) {
  const dme_test::TempDirectory directory;
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database) << database.error().text;
  EXPECT_TRUE(rowsOf(*database).empty());
  ASSERT_TRUE(database->write(object("sys")));
  for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
    EXPECT_EQ(static_cast<unsigned>(entry.status().permissions()), 0600u) << entry.path();
  }
}

TEST(Database, Settings_AreTheDurableOnes) {
  const dme_test::TempDirectory directory;
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database);
  EXPECT_EQ(database->connection().queryText("PRAGMA journal_mode").value(), "wal");
  EXPECT_EQ(database->connection().queryInteger("PRAGMA synchronous").value(), 2);
  EXPECT_EQ(database->connection().queryInteger("PRAGMA user_version").value(), Database::kSchema);
  EXPECT_EQ(database->connection().queryText("PRAGMA locking_mode").value(), "exclusive");
}

TEST(Database, MissingDirectory_IsMadeForItsOwnerOnly) {
  const dme_test::TempDirectory directory;
  ASSERT_TRUE(Database::open(directory.file("state")));
  const auto mode = std::filesystem::status(directory.file("state")).permissions();
  EXPECT_EQ(static_cast<unsigned>(mode), 0700u);
}

TEST(Database, ValuesOfEveryKind_ComeBackAfterReopening) {
  const dme_test::TempDirectory directory;
  const std::string hostile("a\0'\xff\n", 5);
  {
    Result<Database> database = Database::open(directory.path());
    ASSERT_TRUE(database);
    ASSERT_TRUE(
        database->write(object("sys/a", {{"empty", std::string()},
                                         {"hostile", hostile},
                                         {"large", std::numeric_limits<std::int64_t>::min()},
                                         {"real", 0.5},
                                         {"text", std::string("12")}})));
  }
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database) << database.error().text;
  const std::vector<Row> expected{
      {"sys/a", "class slot", Cell()}, {"sys/a", "empty", std::string()},
      {"sys/a", "hostile", hostile},   {"sys/a", "large", std::numeric_limits<std::int64_t>::min()},
      {"sys/a", "real", 0.5},          {"sys/a", "text", std::string("12")}};
  EXPECT_EQ(rowsOf(*database), expected);
}

TEST(Database, PropertyWrittenAgain_HasTheLastValueAndClearedIsGone) {
  const dme_test::TempDirectory directory;
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database);
  ASSERT_TRUE(database->write(object("a", {{"p", std::int64_t{1}}, {"q", std::int64_t{1}}})));
  ASSERT_TRUE(database->write(object("a", {{"p", std::int64_t{2}}, {"q", Cell()}})));
  const std::vector<Row> expected{{"a", "class slot", Cell()}, {"a", "p", std::int64_t{2}}};
  EXPECT_EQ(rowsOf(*database), expected);
}

TEST(Database, Removal_TakesTheObjectWithAllBelowItAndNoNeighbour) {
  const dme_test::TempDirectory directory;
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database);
  ChangeSet changes;
  for (const char* dn :
       {"a", "a/b", "a/b!", "a/b-c", "a/b/c", "a/b/c/d", "a/b/\xff", "a/b0", "a/bc"}) {
    add(changes, dn, {{"p", std::int64_t{1}}});
  }
  ASSERT_TRUE(database->write(changes));
  ChangeSet removal;
  removal.remove("a/b");
  ASSERT_TRUE(database->write(removal));
  const std::vector<Row> expected{{"a", "class slot", Cell()},     {"a/b!", "class slot", Cell()},
                                  {"a/b-c", "class slot", Cell()}, {"a/b0", "class slot", Cell()},
                                  {"a/bc", "class slot", Cell()},  {"a", "p", std::int64_t{1}},
                                  {"a/b!", "p", std::int64_t{1}},  {"a/b-c", "p", std::int64_t{1}},
                                  {"a/b0", "p", std::int64_t{1}},  {"a/bc", "p", std::int64_t{1}}};
  EXPECT_EQ(rowsOf(*database), expected);
}

TEST(Database, RemovedAndMadeAnewInOneTransaction_HasOnlyTheNewValues) {
  const dme_test::TempDirectory directory;
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database);
  ChangeSet first = object("a", {{"p", std::int64_t{1}}});
  add(first, "a/b");
  ASSERT_TRUE(database->write(first));
  ChangeSet second;
  second.remove("a");
  add(second, "a", {{"q", std::int64_t{2}}});
  ASSERT_TRUE(database->write(second));
  const std::vector<Row> expected{{"a", "class slot", Cell()}, {"a", "q", std::int64_t{2}}};
  EXPECT_EQ(rowsOf(*database), expected);
}

TEST(Database, SchemaBefore_IsTakenOverWithItsContent) {
  const dme_test::TempDirectory directory;
  {
    Result<Database> database = Database::open(directory.path());
    ASSERT_TRUE(database);
    ASSERT_TRUE(database->write(object("a", {{"p", std::int64_t{1}}})));
    ASSERT_TRUE(database->connection().execute("PRAGMA user_version = 1"));
  }
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database) << database.error().text;
  const std::vector<Row> expected{{"a", "class slot", Cell()}, {"a", "p", std::int64_t{1}}};
  EXPECT_EQ(rowsOf(*database), expected);
  EXPECT_EQ(database->connection().queryInteger("PRAGMA user_version").value(), Database::kSchema);
}

TEST(Database, OneChangeOfSeveralFails_NoneIsMade) {
  const dme_test::TempDirectory directory;
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database);
  ChangeSet changes = object("a");
  changes.set("nobody", "p", std::int64_t{1});
  ASSERT_FALSE(database->write(changes));
  EXPECT_TRUE(rowsOf(*database).empty());
  EXPECT_TRUE(database->write(object("b")));
}

TEST(Database, DiskFull_FailsAndLaterWritesSucceed) {
  const dme_test::TempDirectory directory;
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database);
  ASSERT_TRUE(database->write(object("a")));
  ASSERT_TRUE(database->connection().execute("PRAGMA max_page_count = 1"));
  const Result<void> written = database->write(property("a", "p", std::string(100000, 'x')));
  ASSERT_FALSE(written);
  EXPECT_EQ(written.error().code, SQLITE_FULL);
  ASSERT_TRUE(database->connection().execute("PRAGMA max_page_count = 1000000"));
  EXPECT_TRUE(database->write(property("a", "p", std::string("y"))));
}

TEST(Database, MovedAway_TakesNothingUntilItIsBack) {
  const dme_test::TempDirectory directory;
  const std::string state = directory.file("state");
  Result<Database> database = Database::open(state);
  ASSERT_TRUE(database);
  for (const char* name : {"", "/engine.db", "/engine.db-wal"}) {
    SCOPED_TRACE(name);
    std::filesystem::rename(state + name, directory.file("elsewhere"));
    const Result<void> written = database->write(object("a"));
    ASSERT_FALSE(written);
    EXPECT_THAT(written.error().text, testing::StartsWith(state + "/engine.db"));
    EXPECT_THAT(written.error().text, testing::HasSubstr("was deleted, moved or replaced"));
    std::filesystem::rename(directory.file("elsewhere"), state + name);
    EXPECT_TRUE(database->write(object("a")));
  }
}

TEST(Database, ReplacedByACopy_TakesNothing) {
  const dme_test::TempDirectory directory;
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database);
  ASSERT_TRUE(database->write(object("a")));
  std::filesystem::copy(directory.file("engine.db"), directory.file("copy"));
  std::filesystem::rename(directory.file("copy"), directory.file("engine.db"));
  EXPECT_FALSE(database->write(object("b")));
}

TEST(Database, SecondOne_IsRefusedAndNamesTheHolder) {
  const dme_test::TempDirectory directory;
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database);
  const Result<Database> second = Database::open(directory.path());
  ASSERT_FALSE(second);
  EXPECT_EQ(second.error().text, directory.path() + " is in use by process " +
                                     std::to_string(::getpid()) +
                                     ": stop it, or configure another state directory");
}

TEST(Database, LeftByAKilledProcess_HoldsWhatWasWritten) {
  const dme_test::TempDirectory directory;
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    Result<Database> database = Database::open(directory.path());
    const bool written = database && database->write(object("a")) && database->write(object("b"));
    ::kill(::getpid(), written ? SIGKILL : SIGTERM);
    ::_exit(1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  ASSERT_GT(std::filesystem::file_size(directory.file("engine.db-wal")), 0u);
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database) << database.error().text;
  EXPECT_EQ(rowsOf(*database).size(), 2u);
}

TEST(Database, CreationCutShort_StartsAfresh) {
  const dme_test::TempDirectory directory;
  dme_test::writeBytes(directory.file("engine.db.new"), "half");
  dme_test::writeBytes(directory.file("engine.db.new-journal"), "half");
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database) << database.error().text;
  EXPECT_FALSE(std::filesystem::exists(directory.file("engine.db.new")));
}

TEST(Database, Checkpointed_LeavesNothingToReplay) {
  const dme_test::TempDirectory directory;
  Result<Database> database = Database::open(directory.path());
  ASSERT_TRUE(database);
  ASSERT_TRUE(database->write(object("a")));
  ASSERT_TRUE(database->checkpoint());
  EXPECT_EQ(std::filesystem::file_size(directory.file("engine.db-wal")), 0u);
}

}  // namespace
}  // namespace dme

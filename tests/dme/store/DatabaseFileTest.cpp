#include "dme/store/DatabaseFile.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "dme/store/Database.h"
#include "tests/dme/support/TempDirectory.h"

namespace dme {
namespace {

using Files = std::map<std::string, std::string>;

/// A state directory with a database in it, optionally with a log as a killed process leaves it.
class DatabaseFile : public testing::Test {
 protected:
  void createClosed(int objects = 200) {
    Result<Database> database = Database::open(directory_.path());
    ASSERT_TRUE(database) << database.error().text;
    fill(*database, objects);
  }

  void createKilled(const std::string& lastStatement = "SELECT 1") {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      Result<Database> database = Database::open(directory_.path());
      if (database) {
        fill(*database, 200);
        database->connection().execute(lastStatement);
        ::kill(::getpid(), SIGKILL);
      }
      ::_exit(1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  }

  static void fill(Database& database, int objects) {
    ChangeSet changes;
    for (int i = 0; i < objects; ++i) {
      const std::string dn = "sys/slot-" + std::to_string(i);
      changes.create(dn, "slot");
      changes.set(dn, "name", std::string(50, 'n'));
    }
    ASSERT_TRUE(database.write(changes));
  }

  void execute(const std::string& sql) {
    Result<Connection> connection = Connection::open(file(), SQLITE_OPEN_READWRITE);
    ASSERT_TRUE(connection);
    const Result<void> done = connection->execute(sql);
    ASSERT_TRUE(done) << done.error().text;
  }

  void overwrite(std::size_t offset, const std::string& bytes) {
    std::string content = dme_test::readBytes(file());
    content.replace(offset, bytes.size(), bytes);
    dme_test::writeBytes(file(), content);
  }

  /// Opening is refused with this text and changes nothing in the directory but the lock.
  void expectRefused(const std::string& text) {
    const Files before = filesWithoutLock();
    const Result<Database> database = Database::open(directory_.path());
    ASSERT_FALSE(database);
    EXPECT_EQ(database.error().text, text);
    EXPECT_TRUE(filesWithoutLock() == before) << "files were touched";
  }

  Files filesWithoutLock() const {
    Files files = directory_.content();
    files.erase("lock");
    return files;
  }

  std::string file() const { return directory_.file("engine.db"); }

  dme_test::TempDirectory directory_;
};

constexpr const char* kDamageRemedy =
    " and was left as it is: restore a copy of it, or move it away to start with an empty "
    "database";
constexpr const char* kNewerRemedy =
    ": install that version, or move the file away to start with an empty database";

TEST_F(DatabaseFile, NewerSchema_IsRefusedUntouched) {
  createClosed();
  execute("PRAGMA user_version = 7");
  expectRefused(file() + " was written by a newer version (schema 7, this program knows 3)" +
                kNewerRemedy);
}

TEST_F(DatabaseFile, NewerSchemaStillInTheLog_IsRefusedUntouched) {
  createKilled("PRAGMA user_version = 7");
  ASSERT_GT(std::filesystem::file_size(file() + "-wal"), 0u);
  expectRefused(file() + " was written by a newer version (schema 7, this program knows 3)" +
                kNewerRemedy);
}

TEST_F(DatabaseFile, NoDatabaseAtAll_IsRefusedUntouched) {
  dme_test::writeBytes(file(), std::string(8192, 'x'));
  expectRefused(file() + " is damaged (file is not a database)" + kDamageRemedy);
}

TEST_F(DatabaseFile, ShortFile_IsRefusedUntouched) {
  dme_test::writeBytes(file(), "SQLite");
  expectRefused(file() + " is damaged (file is not a database)" + kDamageRemedy);
}

TEST_F(DatabaseFile, EmptyFile_IsRefusedUntouched) {
  dme_test::writeBytes(file(), "");
  expectRefused(file() + " is damaged (it is empty)" + kDamageRemedy);
}

TEST_F(DatabaseFile, HeaderOverwritten_IsRefusedUntouched) {
  createClosed();
  overwrite(0, std::string(16, '\0'));
  expectRefused(file() + " is damaged (file is not a database)" + kDamageRemedy);
}

TEST_F(DatabaseFile, CutInTheMiddle_IsRefusedUntouched) {
  createClosed();
  std::filesystem::resize_file(file(), std::filesystem::file_size(file()) / 2);
  const Files before = filesWithoutLock();
  const Result<Database> database = Database::open(directory_.path());
  ASSERT_FALSE(database);
  EXPECT_TRUE(database.error().text.starts_with(file() + " is damaged (")) << database.error().text;
  EXPECT_TRUE(filesWithoutLock() == before);
}

TEST_F(DatabaseFile, CutByItsLastByte_IsRefusedUntouched) {
  createClosed();
  std::filesystem::resize_file(file(), std::filesystem::file_size(file()) - 1);
  expectRefused(file() + " is damaged (it ends within a page)" + kDamageRemedy);
}

TEST_F(DatabaseFile, EveryPageOverwrittenInTurn_IsRefusedUntouched) {
  createClosed();
  const std::string sound = dme_test::readBytes(file());
  constexpr std::size_t kPage = 4096;
  ASSERT_GT(sound.size(), 4 * kPage);
  for (std::size_t page = 1; page * kPage < sound.size(); ++page) {
    dme_test::writeBytes(file(), sound);
    overwrite(page * kPage, std::string(kPage, '\x7f'));
    const Files before = filesWithoutLock();
    const Result<Database> database = Database::open(directory_.path());
    ASSERT_FALSE(database) << "page " << page;
    EXPECT_TRUE(database.error().text.starts_with(file() + " is damaged ("))
        << database.error().text;
    EXPECT_TRUE(filesWithoutLock() == before) << "page " << page;
  }
}

TEST_F(DatabaseFile, DamagedWithALog_IsRefusedWithBothUntouched) {
  createClosed();
  createKilled("UPDATE property SET value = 'm'");
  ASSERT_GT(std::filesystem::file_size(file() + "-wal"), 0u);
  // The first page of the log is what counts, so the damage goes there too.
  overwrite(0, std::string(100, '\0'));
  std::filesystem::resize_file(file() + "-wal", 40);
  expectRefused(file() + " is damaged (file is not a database)" + kDamageRemedy);
}

TEST_F(DatabaseFile, SoundWithALog_IsInspectedWithoutATrace) {
  createKilled();
  const Files before = filesWithoutLock();
  const Result<void> inspected = inspectDatabaseFile(file(), 3);
  EXPECT_TRUE(inspected) << inspected.error().text;
  EXPECT_TRUE(filesWithoutLock() == before);
}

TEST_F(DatabaseFile, SoundWithoutALog_IsInspectedWithoutATrace) {
  createClosed();
  const Files before = filesWithoutLock();
  const Result<void> inspected = inspectDatabaseFile(file(), 3);
  EXPECT_TRUE(inspected) << inspected.error().text;
  EXPECT_TRUE(filesWithoutLock() == before);
}

TEST_F(DatabaseFile, AnotherProgramsDatabase_IsRefusedUntouched) {
  Result<Connection> connection =
      Connection::open(file(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  ASSERT_TRUE(connection);
  ASSERT_TRUE(connection->execute("CREATE TABLE theirs (x)"));
  expectRefused(file() +
                " is a database of another program: move it away, or configure another state "
                "directory");
}

TEST_F(DatabaseFile, LogWithoutDatabase_IsRefusedUntouched) {
  createKilled();
  std::filesystem::remove(file());
  expectRefused(file() + " is missing but its log " + file() +
                "-wal is there: put the database back, or move the log away to start with an "
                "empty one");
}

TEST_F(DatabaseFile, OpenInAnotherProgram_IsRefusedAfterTheWait) {
  createClosed();
  Result<Connection> other = Connection::open(file(), SQLITE_OPEN_READWRITE);
  ASSERT_TRUE(other);
  ASSERT_TRUE(other->execute("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE; COMMIT"));
  const Result<Database> database = Database::open(directory_.path());
  ASSERT_FALSE(database);
  EXPECT_EQ(database.error().text, file() +
                                       " cannot be opened (database is locked): close the other "
                                       "program that has it open");
}

TEST_F(DatabaseFile, StateDirectoryIsAFile_IsRefused) {
  dme_test::writeBytes(directory_.file("plain"), "text");
  const Result<Database> database = Database::open(directory_.file("plain"));
  ASSERT_FALSE(database);
  EXPECT_EQ(database.error().text, directory_.file("plain") +
                                       " is not a directory: configure a directory for the "
                                       "engine's state");
}

TEST_F(DatabaseFile, ParentMissing_IsRefused) {
  const Result<Database> database = Database::open(directory_.file("a/b"));
  ASSERT_FALSE(database);
  EXPECT_EQ(database.error().text, directory_.file("a/b") +
                                       " cannot be created (No such file or directory): create it "
                                       "and give it to the user that runs this program");
}

/// Runs `attempt` in a child without the right to write everywhere; its text comes back.
std::string asOrdinaryUser(const std::function<std::string()>& attempt) {
  int ends[2];
  if (::pipe(ends) != 0) {
    return "no pipe";
  }
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(ends[0]);
    const bool ordinary = ::geteuid() != 0 || ::setuid(65534) == 0;
    const std::string text = ordinary ? attempt() : "cannot give up the rights";
    const ssize_t written = ::write(ends[1], text.data(), text.size());
    ::_exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
  }
  ::close(ends[1]);
  std::string text;
  char buffer[512];
  for (ssize_t size; (size = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<std::size_t>(size));
  }
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  return text;
}

TEST_F(DatabaseFile, DirectoryNotWritable_IsRefused) {
  ASSERT_EQ(::chmod(directory_.path().c_str(), 0555), 0);
  const std::string text = asOrdinaryUser([this] {
    const Result<Database> database = Database::open(directory_.path());
    return database ? std::string("opened") : database.error().text;
  });
  ASSERT_EQ(::chmod(directory_.path().c_str(), 0700), 0);
  EXPECT_EQ(text, directory_.path() +
                      " is not writable (Permission denied): give it to the user that runs this "
                      "program");
}

TEST_F(DatabaseFile, FileNotWritable_IsRefused) {
  createClosed();
  ASSERT_EQ(::chmod(directory_.path().c_str(), 0777), 0);
  ASSERT_EQ(::chmod(file().c_str(), 0444), 0);
  ASSERT_EQ(::chmod(directory_.file("lock").c_str(), 0666), 0);
  const std::string text = asOrdinaryUser([this] {
    const Result<Database> database = Database::open(directory_.path());
    return database ? std::string("opened") : database.error().text;
  });
  EXPECT_EQ(text, file() +
                      " is not writable (Permission denied): give it to the user that runs this "
                      "program");
}

}  // namespace
}  // namespace dme

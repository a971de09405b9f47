#include <HabitraModel/PersistentHistoryObserver.h>
#include <HabitraModel/Store/History/HistoryReaders.h>

#include "Store/StoreFixture.h"

namespace habitra {
namespace {

using Reason = PersistentHistoryFetcher::Error::Reason;

class PersistentHistoryTest : public StoreTest {
 protected:
  std::int64_t save(StoreContext& context, const std::string& title, Author author = Author::app) {
    context.insert(titled(title));
    return context.save({.author = author}).sequence;
  }
  static std::vector<std::int64_t> sequences(const std::vector<PersistentHistoryTransaction>& transactions) {
    std::vector<std::int64_t> found;
    for (const auto& read : transactions) found.push_back(read.transaction.sequence);
    return found;
  }
  /// What goes wrong in a fetch of everything, and in one that goes on from the beginning.
  std::vector<Reason> failures() {
    std::vector<Reason> reasons;
    const auto note = [&](const auto& fetch) {
      try {
        fetch();
      } catch (const PersistentHistoryFetcher::Error& error) {
        EXPECT_NE(std::string(error.what()).find(file()), std::string::npos) << error.what();
        reasons.push_back(error.reason());
      }
    };
    const auto context = open();
    PersistentHistoryFetcher fetcher(*context);
    note([&] { static_cast<void>(fetcher.fetch()); });
    note([&] { static_cast<void>(fetcher.fetch({context->storeIdentifier(), 0})); });
    return reasons;
  }
};

TEST_F(PersistentHistoryTest, HistoryIsReadSinceATokenOrADate) {
  const auto context = open();
  PersistentHistoryFetcher fetcher(*context);
  const HistoryToken empty = fetcher.currentToken();
  EXPECT_EQ(fetcher.fetch(empty).token, empty);
  context->refresh();
  for (int day = 0; day < 4; ++day) {
    save(*context, "Walk");
    clock_->advance(std::chrono::days(1));
  }
  const PersistentHistory all = fetcher.fetch(empty);
  EXPECT_FALSE(all.everythingChanged);
  EXPECT_EQ(sequences(all.transactions), (std::vector<std::int64_t>{1, 2, 3, 4}));
  ASSERT_EQ(all.transactions[1].changes.size(), 1U);
  EXPECT_EQ(all.transactions[1].changes[0].kind, ChangeKind::insertion);
  EXPECT_EQ(all.token, (HistoryToken{context->storeIdentifier(), 4}));
  EXPECT_TRUE(fetcher.fetch(all.token).transactions.empty());

  const PersistentHistory some = fetcher.fetch({empty.storeIdentifier, 1}, 2);
  EXPECT_EQ(sequences(some.transactions), (std::vector<std::int64_t>{2, 3}));
  EXPECT_TRUE(some.hasMore);
  const PersistentHistory rest = fetcher.fetch(some.token, 2);
  EXPECT_EQ(sequences(rest.transactions), std::vector<std::int64_t>{4});
  EXPECT_FALSE(rest.hasMore);

  runSQL(file(), "UPDATE habitra_change SET kind=9 WHERE sequence=2");
  context->refresh();
  PersistentHistoryFetcher late(*context, testMoment + std::chrono::days(2));
  EXPECT_EQ(sequences(late.fetch().transactions), (std::vector<std::int64_t>{3, 4})) << "no others are read";
  runSQL(file(), "UPDATE habitra_change SET kind=1 WHERE sequence=2");
  context->refresh();
  EXPECT_EQ(sequences(PersistentHistoryFetcher(*context).fetch().transactions),
            (std::vector<std::int64_t>{1, 2, 3, 4}));

  runSQL(file(), "DELETE FROM habitra_transaction WHERE sequence<=2");
  context->refresh();
  EXPECT_FALSE(PersistentHistoryFetcher(*context, testMoment + std::chrono::days(3)).fetch().everythingChanged);
  EXPECT_TRUE(PersistentHistoryFetcher(*context, testMoment).fetch().everythingChanged) << "there were others";
}

TEST_F(PersistentHistoryTest, ATokenThatSaysNothingMeansThatEverythingChanged) {
  const auto context = open();
  for (int i = 0; i < 5; ++i) save(*context, "Walk");
  const std::string identifier = context->storeIdentifier();
  PersistentHistoryFetcher fetcher(*context);
  const auto everythingChanged = [&](const HistoryToken& token) {
    context->refresh();
    const PersistentHistory history = fetcher.fetch(token);
    EXPECT_EQ(history.token.storeIdentifier, identifier);
    if (history.everythingChanged) {
      EXPECT_TRUE(history.transactions.empty());
      EXPECT_EQ(history.token.sequence, 5);
    }
    return history.everythingChanged;
  };
  EXPECT_FALSE(everythingChanged({identifier, 0}));
  EXPECT_FALSE(everythingChanged({identifier, 5}));
  EXPECT_TRUE(everythingChanged({identifier, 6})) << "an older copy of the store was put in its place";
  EXPECT_TRUE(everythingChanged({"another store", 3}));
  runSQL(file(), "DELETE FROM habitra_transaction WHERE sequence<=3");
  EXPECT_TRUE(everythingChanged({identifier, 2}));
  EXPECT_FALSE(everythingChanged({identifier, 3})) << "nothing after it is gone";
  runSQL(file(), "DELETE FROM habitra_transaction");
  EXPECT_TRUE(everythingChanged({identifier, 4}));
  EXPECT_FALSE(everythingChanged({identifier, 5}));
}

TEST_F(PersistentHistoryTest, ATokenIsKeptAsText) {
  const HistoryToken token{"018D0000-0000-7000-8000-000000000000", 42};
  EXPECT_EQ(HistoryToken::fromText(token.text()), token);
  for (const char* text : {"", " 4", "id", "id ", "id x", "id 4x", "id -1", "id 99999999999999999999"})
    EXPECT_EQ(HistoryToken::fromText(text), std::nullopt) << text;
}

TEST_F(PersistentHistoryTest, RowsThatAreNoHistoryAreRefused) {
  const auto context = open();
  for (int i = 0; i < 3; ++i) save(*context, "Walk");
  EXPECT_TRUE(failures().empty());
  const std::vector<Reason> both(2, Reason::historyTransactionConvertionFailed);
  for (const std::string damage :
       {"kind=4", "kind=0", "entity=200", "entity=257", "object=0", "attributes=-1", "day=3000000000"}) {
    runSQL(file(), "CREATE TABLE kept AS SELECT * FROM habitra_change WHERE sequence=2");
    runSQL(file(), "UPDATE habitra_change SET " + damage + " WHERE sequence=2");
    EXPECT_EQ(failures(), both) << damage;
    runSQL(file(), "DELETE FROM habitra_change WHERE sequence=2; INSERT INTO habitra_change SELECT * FROM kept");
    runSQL(file(), "DROP TABLE kept");
  }
  runSQL(file(), "UPDATE habitra_transaction SET author=char(7)||'nobody' WHERE sequence=2");
  EXPECT_TRUE(failures().empty()) << "whoever that was, the change is known";
  runSQL(file(), "DELETE FROM habitra_transaction WHERE sequence=2");
  EXPECT_EQ(failures(), both) << "a hole";
  runSQL(file(), "DELETE FROM habitra_transaction WHERE sequence=3");
  EXPECT_EQ(failures(), both) << "the end is missing";
}

/// One program with an observer, and what that was told.
class Observing {
 public:
  Observing(const std::filesystem::path& file, const std::shared_ptr<const qz::Clock>& clock,
            std::shared_ptr<KeyValueDefaults> defaults)
      : container(std::make_shared<HabitraNSPersistentCloudKitContainer>(ContainerLocation::url(file), clock)),
        context(container->newBackgroundContext()),
        observer(
            Author::widget, std::move(defaults), container,
            [this](const PersistentHistoryTransaction& read) { seen.push_back(read.transaction.sequence); },
            [this](const PersistentHistoryObserver::Changes& changes) {
              merged.push_back(changes);
              changes.merge(*context);
            }) {}

  /// What was seen since the last asking, after a reading.
  std::vector<std::int64_t> process() {
    observer.processNow();
    return std::exchange(seen, {});
  }

  std::shared_ptr<HabitraNSPersistentCloudKitContainer> container;
  std::unique_ptr<StoreContext> context;
  std::vector<std::int64_t> seen;
  std::vector<PersistentHistoryObserver::Changes> merged;
  PersistentHistoryObserver observer;
};

using Sequences = std::vector<std::int64_t>;

TEST_F(PersistentHistoryTest, AnObserverMergesWhatOthersSaved) {
  const ObjectID task = makeTask();
  const auto defaults = KeyValueDefaults::inMemory();
  Observing program(file(), clock_, defaults);
  EXPECT_TRUE(defaults->keys().empty()) << "nothing runs before it is asked to";
  EXPECT_EQ(program.process(), Sequences{});
  ASSERT_EQ(program.merged.size(), 1U);
  EXPECT_TRUE(program.merged[0].everythingChanged) << "it has never looked";

  TaskEntity& known = *program.context->find<TaskEntity>(task);
  const auto other = open();
  other->find<TaskEntity>(task)->title = "Run";
  other->insertLogEntry(entryOn(task, 20240101));
  const auto sequence = other->save({.author = Author::widget}).sequence;
  save(*program.context, "Own", Author::siri);
  EXPECT_EQ(program.process(), Sequences{sequence}) << "the writer counts, not the author it names";
  ASSERT_EQ(program.merged.size(), 2U);
  EXPECT_FALSE(program.merged[1].everythingChanged);
  EXPECT_EQ(program.merged[1].objects.at(EntityNumber::task), std::set{task});
  EXPECT_EQ(program.merged[1].objects.at(EntityNumber::taskLogEntry).size(), 1U);
  EXPECT_NE(program.context->find<TaskEntity>(task), nullptr);
  EXPECT_EQ(known.title, "Run");
  EXPECT_EQ(program.process(), Sequences{}) << "once";
  EXPECT_EQ(program.merged.size(), 2U);
  EXPECT_EQ(defaults->keys(), std::vector<std::string>{"pho.token.ext_widget"});
}

TEST_F(PersistentHistoryTest, NothingIsLostBetweenTwoRunsOrByAFailure) {
  makeTask();
  const auto defaults = KeyValueDefaults::inMemory();
  const auto other = open();
  const auto runTwice = [&](auto&& between) {
    Observing(file(), clock_, defaults).process();
    between();
    return Observing(file(), clock_, defaults).process();
  };
  EXPECT_EQ(runTwice([&] { save(*other, "While nobody looked"); }), Sequences{2});
  EXPECT_EQ(runTwice([] {}), Sequences{});

  // A process that dies before its position is kept is told again.
  const auto kept = defaults->values();
  save(*other, "Seen, and then the power went");
  EXPECT_EQ(runTwice([&] { defaults->update([&](auto& values) { values = kept; }); }), Sequences{3});
  // What lies in the defaults is not to be trusted.
  defaults->set("pho.token.ext_widget", std::string("garbage"));
  Observing confused(file(), clock_, defaults);
  EXPECT_EQ(confused.process(), Sequences{});
  EXPECT_TRUE(confused.merged.at(0).everythingChanged);

  // A row that cannot be read is no reason to stand still.
  save(*other, "Damaged");
  runSQL(file(), "UPDATE habitra_change SET kind=9 WHERE sequence=4");
  EXPECT_EQ(confused.process(), Sequences{});
  EXPECT_TRUE(confused.merged.at(1).everythingChanged);
  save(*other, "Sound again");
  EXPECT_EQ(confused.process(), Sequences{5});

  // A history longer than a batch comes whole and in order.
  Sequences expected;
  for (int i = 0; i < 250; ++i) expected.push_back(save(*other, "Many"));
  EXPECT_EQ(confused.process(), expected);
}

TEST_F(PersistentHistoryTest, AStoreIsLeftAndOpenedAnewWithNothingLostOrTold) {
  makeTask();
  Observing program(file(), clock_, KeyValueDefaults::inMemory());
  program.observer.start();
  EXPECT_EQ(program.process(), Sequences{});
  program.observer.stop();
  program.context.reset();
  program.container->close();
  MaintenanceLock(file().parent_path(), std::chrono::milliseconds(0)).takeExclusive();

  // One store of the container that the observer has never met, and the one it meets next.
  for (int i = 0; i < 2; ++i) {
    program.context = program.container->newBackgroundContext();
    save(*program.context, "Own");
    if (i == 0) program.container->close();
  }
  const auto sequence = save(*open(), "Another's");
  EXPECT_EQ(program.process(), Sequences{sequence}) << "what it wrote under another name is its own";
  ASSERT_EQ(program.merged.size(), 2U);
  EXPECT_FALSE(program.merged[1].everythingChanged);
}

TEST_F(PersistentHistoryTest, AFailingHandlerIsNoReasonToStop) {
  makeTask();
  const auto container = std::make_shared<HabitraNSPersistentCloudKitContainer>(ContainerLocation::url(file()), clock_);
  Sequences seen;
  int merges = 0;
  PersistentHistoryObserver observer(
      Author::app, KeyValueDefaults::inMemory(), container,
      [&](const PersistentHistoryTransaction& read) {
        seen.push_back(read.transaction.sequence);
        throw std::runtime_error("cannot");
      },
      [&](const PersistentHistoryObserver::Changes&) {
        ++merges;
        throw std::runtime_error("cannot either");
      });
  observer.processNow();
  const auto other = open();
  save(*other, "Run");
  save(*other, "Jump");
  observer.processNow();
  observer.processNow();
  EXPECT_EQ(seen, (Sequences{2, 3}));
  EXPECT_EQ(merges, 2);
}

}  // namespace
}  // namespace habitra

#include <HabitraModel/Store/Engine/RowCoding.h>
#include <HabitraModel/Store/StoreVerification.h>

#include "SampleRows.h"
#include "StoreFixture.h"

#include <rapidcheck/gtest.h>  // after gtest itself

namespace habitra {
namespace {

using ChecksumTest = StoreTest;

std::vector<EntityNumber> damagedEntities(StoreContext& context) {
  std::vector<EntityNumber> numbers;
  for (const DamagedRow& row : StoreVerification::verifyChecksums(context)) numbers.push_back(row.entity);
  return numbers;
}

TEST_F(ChecksumTest, AForeignChangeShowsAndIsNotHealedByWriting) {
  const ObjectID id = makeTask();
  {
    const auto context = open();
    context->insertLogEntry(entryOn(id, 20240101));
    context->save({});
    EXPECT_TRUE(damagedEntities(*context).empty());
  }
  runSQL(file(), "UPDATE TaskEntity SET title='Talk'; UPDATE TaskLogEntryEntity SET entryType=2");
  const auto context = open();
  const std::vector expected{EntityNumber::task, EntityNumber::taskLogEntry};
  EXPECT_EQ(damagedEntities(*context), expected);

  context->find<TaskEntity>(id)->bestStreak = 9;
  TaskLogEntryEntity entry = context->fetchLogEntries(id).at(0);
  entry.progress = 1;
  context->updateLogEntry(entry.key(), entry);
  context->save({});
  EXPECT_EQ(damagedEntities(*context), expected);
}

TEST_F(ChecksumTest, AValueThatDoesNotFitItsWidthIsDamage) {
  const ObjectID id = makeTask();
  runSQL(file(), "UPDATE TaskEntity SET daysMode=40000");
  const auto context = open();
  EXPECT_EQ(errorKind([&] { (void)context->find<TaskEntity>(id); }), StoreError::Kind::damaged);
  const auto damaged = StoreVerification::verifyChecksums(*context);
  ASSERT_EQ(damaged.size(), 1U);
  EXPECT_NE(damaged[0].reason.find("daysMode"), std::string::npos);
}

TEST(RowCodingTest, ChecksumsAreThoseOfStoresThatExist) {
  // Fixed forever: a change here makes every stored row look damaged.
  TaskEntity task{.objectID = ObjectID{300}};
  EXPECT_EQ(rowChecksum(TaskEntity::description(), &task), std::int64_t{7860658907802283864});
  task.title = "Walk";
  task.isNegative = true;
  task.last30Pct = 0.5;
  task.created = qz::Moment(std::chrono::microseconds(-1));
  Bytes encoded;
  encodeAttributes(TaskEntity::description(), &task, allAttributes(TaskEntity::description()), encoded);
  const Bytes expected{5 << 2, 1,    17 << 2, 2,           21 << 2 | 1, 0,   0,   0,   0,  0,
                       0,      0xE0, 0x3F,    36 << 2 | 2, 4,           'W', 'a', 'l', 'k'};
  EXPECT_EQ(encoded, expected);
}

RC_GTEST_PROP(RowCodingTest, DecodingGivesBackWhatWasEncoded, (std::uint32_t seed, std::uint64_t which)) {
  const EntityDescription& entity = TaskEntity::description();
  const auto before = sample<TaskEntity>(seed);
  auto other = sample<TaskEntity>(seed / 2 + 1);
  const AttributeSet attributes(which & allAttributes(entity).bits());
  Bytes encoded;
  encodeAttributes(entity, &before, attributes, encoded);
  const TaskEntity untouched = other;
  RC_ASSERT(decodeAttributes(entity, encoded, attributes, &other));
  RC_ASSERT((differences(entity, &other, &before).bits() & attributes.bits()) == 0U);
  RC_ASSERT((differences(entity, &other, &untouched).bits() & ~attributes.bits()) == 0U);

  // Cut short it is refused or shorter, never read past its end.
  encoded.resize(encoded.size() / 2);
  (void)decodeAttributes(entity, encoded, attributes, &other);
}

}  // namespace
}  // namespace habitra

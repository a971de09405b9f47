#include <HabitraModel/Store/Entities/TaskCategoryLink.h>
#include <HabitraModel/Tasks/TaskCategories.h>
#include <Support/SettableClock.h>

#include <gtest/gtest.h>

#include <array>

namespace habitra {
namespace {

TEST(TaskCategoriesTest, ATaskIsInACategoryOnce) {
  StoreContext context(Store::inMemory(std::make_shared<SettableClock>(qz::Moment())));
  TaskEntity& walk = context.insert(TaskEntity{});
  TaskEntity& read = context.insert(TaskEntity{});
  TaskCategoryEntity& health = context.insert(TaskCategoryEntity{.title = "Health"});
  TaskCategoryEntity& evening = context.insert(TaskCategoryEntity{.title = "Evening"});
  using Categories = std::vector<TaskCategoryEntity*>;

  EXPECT_TRUE(addCategory(context, walk, evening));
  EXPECT_FALSE(addCategory(context, walk, evening));
  EXPECT_TRUE(addCategory(context, walk, health));
  EXPECT_TRUE(addCategory(context, read, health));
  EXPECT_EQ(categoriesOf(context, walk), (Categories{&evening, &health}));
  EXPECT_EQ(tasksOf(context, health), (std::vector<TaskEntity*>{&walk, &read}));

  context.save({});
  const ObjectID kept = context.fetchRelated<TaskCategoryLink>("task", walk.objectID).back()->objectID;
  setCategories(context, walk, std::array{&health, &health});
  EXPECT_EQ(context.save({}).removed, 1);
  const auto links = context.fetchRelated<TaskCategoryLink>("task", walk.objectID);
  ASSERT_EQ(links.size(), 1U);
  EXPECT_EQ(links.front()->objectID, kept) << "where the task was already it stays";

  // Mirroring can bring a link twice.
  context.insert(TaskCategoryLink{.task = walk.objectID, .category = health.objectID});
  EXPECT_EQ(categoriesOf(context, walk), Categories{&health});
  EXPECT_TRUE(removeCategory(context, walk, health));
  EXPECT_FALSE(removeCategory(context, walk, health));
  EXPECT_TRUE(categoriesOf(context, walk).empty());
  context.remove(health);
  EXPECT_TRUE(categoriesOf(context, read).empty()) << "a category takes its links along, and no task";
  EXPECT_EQ(context.fetchAll<TaskEntity>().size(), 2U);
}

}  // namespace
}  // namespace habitra

#include "check/near_names.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

namespace pellago {
namespace {

TEST(EditDistanceTest, CountsEditsAndSwapsOfNeighbours) {
  EXPECT_EQ(edit_distance("", ""), 0u);
  EXPECT_EQ(edit_distance("", "abc"), 3u);
  EXPECT_EQ(edit_distance("abc", ""), 3u);
  EXPECT_EQ(edit_distance("mrege", "merge"), 1u);
  EXPECT_EQ(edit_distance("kitten", "sitting"), 3u);
  EXPECT_EQ(edit_distance("ca", "abc"), 3u);             // a swap is not edited again
  EXPECT_EQ(edit_distance("\u00e9t\u00e9", "ete"), 2u);  // code points, not bytes
}

// Past 64 code points the pattern no longer fits a word of bits and the other way of counting
// takes over; a pair measured both ways round goes through each, so they must agree.
TEST(EditDistanceTest, BothWaysOfCountingAgree) {
  std::mt19937 random(7);
  const auto text = [&](std::size_t length) {
    std::string made;
    for (std::size_t i = 0; i < length; ++i) made += "abc"[random() % 3];
    return made;
  };
  for (int round = 0; round < 2000; ++round) {
    const std::string shorter = text(1 + random() % 64);
    const std::string longer = text(65 + random() % 8);
    const std::string near = shorter + longer.substr(0, 1 + random() % 6);
    ASSERT_EQ(edit_distance(shorter, longer), edit_distance(longer, shorter))
        << shorter << " " << longer;
    ASSERT_EQ(edit_distance(near, longer), edit_distance(longer, near)) << near << " " << longer;
  }
}

TEST(NearMissTest, LineBreaksAreBlanksAroundANameToo) {
  EXPECT_TRUE(near_miss_reasons("\tA001_C001\r\n", "A001_C001").blanks);
  EXPECT_FALSE(near_miss_reasons("A001_C001", "A001_C001").any());
}

TEST(ClosestTest, NearestFirstEachNameOnce) {
  const NameIndex index =
      index_names({"A001_C002", "A001_C001", "A001_C002", "B001_C001", " a001_c010 ", "C"});
  // One edit from the first two (ties in the names' order), two from the third and fourth.
  EXPECT_THAT(closest("A001_C00l", index, 3),
              testing::ElementsAre("A001_C002", "A001_C001", "B001_C001"));
  EXPECT_THAT(closest("A001_C01", index, 1), testing::ElementsAre("A001_C001"));
  EXPECT_THAT(closest("D", index, 3), testing::IsEmpty());  // too short to be near anything
  EXPECT_EQ(comparisons("A001_C00l", index), 4u);           // the names of 7 to 11 letters
  EXPECT_EQ(comparisons("D", index), 1u);
}

}  // namespace
}  // namespace pellago

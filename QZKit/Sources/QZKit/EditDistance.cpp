#include <QZKit/EditDistance.h>

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace qz {
namespace {

template <typename Text>
std::size_t distance(Text a, Text b) {
  std::vector<std::size_t> beforeLast(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
    std::swap(beforeLast, last);
    std::swap(last, row);
  }
  return last.back();
}

}  // namespace

std::size_t editDistance(std::u32string_view a, std::u32string_view b) { return distance(a, b); }

std::size_t editDistance(std::string_view a, std::string_view b) { return distance(a, b); }

}  // namespace qz

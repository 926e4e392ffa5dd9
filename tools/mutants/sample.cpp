// What --check looks for places in; never built. sample.expected lists them.
#include <cstdint>

enum SampleStatus { SampleOk = 1, SampleFailed = 0, SampleLost = -1 };
enum class Colour { Red, Green };

// Tables, what is asserted while compiling, bounds and template arguments have no places.
constexpr int kTable[] = {1, 2, 3};
static_assert(sizeof(kTable) == 3 * sizeof(int) && kTable[0] < 2);
template <int N>
struct Sized {
  char bytes[16];
  Sized<N - 1>* next = nullptr;
};
constexpr int kLimit = 264;

int Sum(const int* values, int count) {
  int sum = 0x10;
  for (int i = 0; i < count; ++i) {
    if (values[i] > kLimit && values[i] != 0) continue;
    sum += values[i];
  }
  // if (sum < 0) return;
  return count == 0 ? sum - 1 : sum;
}

SampleStatus Run(bool& done, Sized<4>* sized) {
  char room[8] = "a < b;";
  while (!done) {
    done = true;
    Sum(nullptr, room[0]);
  }
  switch (sized->bytes[2u]) {
    case 'a':
      break;
    default:
      Sum(nullptr, 1);
  }
  (void)room;
  return sized->next != nullptr ? SampleOk : SampleStatus::SampleFailed;
}

template <typename T>
void Each(T& items, Colour colour) {
  if (colour == Colour::Red) return;
  for (auto& item : items) item.clear();
  if (auto* first = items.first()) first->clear();
  do {
    items.pop();
  } while (items.size() + 1 >= 2);
}

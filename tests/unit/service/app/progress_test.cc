#include "app/progress.h"

#include <mutex>
#include <ostream>
#include <streambuf>
#include <string>

#include <gtest/gtest.h>

#include "support/wait_until.h"

namespace vptz_test {
namespace {

// May be read while another thread writes.
class SharedText : public std::streambuf {
 public:
  bool Holds(const std::string& part) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return text_.find(part) != std::string::npos;
  }
  bool empty() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return text_.empty();
  }

 private:
  int_type overflow(int_type character) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    text_.push_back(static_cast<char>(character));
    return character;
  }

  std::mutex mutex_;
  std::string text_;
};

TEST(StartProgress, TellsAfterEachPeriodHowFarTheStartIs) {
  SharedText text;
  std::ostream out(&text);
  vptzd::StartProgress progress(out, std::chrono::milliseconds(1));
  EXPECT_TRUE(WaitUntil([&] { return text.Holds("vptzd: opening the database ...\n"); }));
  progress.Reached(12, 64);
  EXPECT_TRUE(WaitUntil([&] { return text.Holds("vptzd: storing camera 12 of 64 ...\n"); }));
}

TEST(StartProgress, SaysNothingOfAStartThatIsQuick) {
  SharedText text;
  std::ostream out(&text);
  { const vptzd::StartProgress progress(out, std::chrono::hours(1)); }
  EXPECT_TRUE(text.empty());
}

}  // namespace
}  // namespace vptz_test

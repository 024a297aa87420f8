// Handles with static storage that are set while the program runs, and left to its end.

#include <cstdlib>

#include <unistd.h>

#include <gtest/gtest.h>

#include <moxtel/io.hpp>
#include <moxtel/pointer.hpp>
#include <moxtel/set.hpp>

namespace moxtel {
namespace {

constexpr int ALL_DESTROYED = 7;
constexpr int NOT_ALL_DESTROYED = 8;

int alive = 0;

/// One of the values that the static objects own.
struct Owned {
    Owned() { ++alive; }
    Owned(const Owned&) { ++alive; }
    Owned& operator=(const Owned&) = default;
    ~Owned() { --alive; }
};

/// The value that is destroyed last: it ends the program by a status of its own.
struct Last {
    Last() = default;
    Last(const Last&) = delete;
    Last& operator=(const Last&) = delete;
    ~Last() { _exit(alive == 0 ? ALL_DESTROYED : NOT_ALL_DESTROYED); }
};

/// A device that owns a value.
class OwningDevice : public io::Device {
  public:
    bool canRead() const override { return true; }
    bool canWrite() const override { return false; }
    int seekCapability() const override { return 0; }
    std::size_t read(char*, std::size_t) override { return 0; }
    std::size_t write(const char*, std::size_t) override { return 0; }

  private:
    Owned m_value;
};

// Destroyed in the opposite order.
mem::Pointer<Last> last;
mem::Pointer<Owned> pointer;
mem::Array<Owned> array;
io::TextReader reader;

void setAll() {
    last = mem::Pointer<Last>(new Last);
    pointer = mem::Pointer<Owned>(new Owned);
    array = mem::Array<Owned>(3);
    reader = io::TextReader(new OwningDevice, 0);
    static util::LinkedHashMap<int, Owned> map;
    map[5];
    std::exit(alive == 6 ? EXIT_SUCCESS : EXIT_FAILURE);
}

TEST(StaticHandles, AreReleasedAtTheEndOfTheProgram) {
    EXPECT_EXIT(setAll(), testing::ExitedWithCode(ALL_DESTROYED), "");
}

}  // namespace
}  // namespace moxtel

#include <moxtel/exception.hpp>

#include <cstdarg>
#include <exception>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

namespace moxtel {
namespace {

/// Whether an `E`, thrown by value, is caught by a handler for `Base`.
template <class E, class Base>
bool isCaughtAs() {
    try {
        throw E("message");
    } catch (const Base& e) {
        return std::string(e.what()) == "message";
    } catch (...) {
        return false;
    }
}

template <class E>
class EveryException : public testing::Test {};

using Family =
    testing::Types<Exception, AccessException, NotFoundException, IOException,
                   UnsupportedOperationException, AlreadyExistsException, AllocationException>;
TYPED_TEST_SUITE(EveryException, Family);

TYPED_TEST(EveryException, HoldsItsMessage) {
    const std::string message = "Key \"x\" is already mapped.";
    const TypeParam exception(message);
    EXPECT_EQ(exception.why(), message);
    EXPECT_EQ(exception.what(), exception.why().c_str());
    static_assert(noexcept(exception.what()));
}

TYPED_TEST(EveryException, DefaultHasAnEmptyMessage) {
    const TypeParam exception;
    EXPECT_EQ(exception.why(), "");
    EXPECT_STREQ(exception.what(), "");
}

TYPED_TEST(EveryException, CopyOutlivesTheOriginal) {
    auto original = std::make_unique<TypeParam>("message");
    const TypeParam copy(*original);
    original.reset();
    EXPECT_STREQ(copy.what(), "message");
}

TYPED_TEST(EveryException, IsCaughtAsTheRootAndAsAStandardException) {
    EXPECT_TRUE((isCaughtAs<TypeParam, TypeParam>()));
    EXPECT_TRUE((isCaughtAs<TypeParam, Exception>()));
    EXPECT_TRUE((isCaughtAs<TypeParam, std::exception>()));
}

TYPED_TEST(EveryException, CanBeThrownAsAPointer) {
    try {
        throw new TypeParam("message");
    } catch (TypeParam* e) {
        EXPECT_STREQ(e->what(), "message");
        delete e;
    }
}

TYPED_TEST(EveryException, IsBuiltFromAFormat) {
    EXPECT_EQ(exceptf<TypeParam>("%s %d", "row", 7).why(), "row 7");
}

TEST(ExceptionFamily, AlreadyExistsIsAnUnsupportedOperation) {
    EXPECT_TRUE((isCaughtAs<AlreadyExistsException, UnsupportedOperationException>()));
}

TEST(ExceptionFamily, NotFoundIsAnAccessException) {
    EXPECT_TRUE((isCaughtAs<NotFoundException, AccessException>()));
}

TEST(ExceptionFamily, SiblingsAreToldApart) {
    EXPECT_FALSE((isCaughtAs<IOException, AccessException>()));
    EXPECT_FALSE((isCaughtAs<IOException, UnsupportedOperationException>()));
    EXPECT_FALSE((isCaughtAs<AllocationException, IOException>()));
    EXPECT_FALSE((isCaughtAs<UnsupportedOperationException, AlreadyExistsException>()));
    EXPECT_FALSE((isCaughtAs<AccessException, NotFoundException>()));
}

TEST(Exceptf, IOExceptionOfABadRowIsCaughtByItsBases) {
    EXPECT_STREQ(exceptf<IOException>("Bad row %u", 7U).what(), "Bad row 7");
    EXPECT_THROW(throw exceptf<IOException>("Bad row %u", 7U), IOException);
    EXPECT_THROW(throw exceptf<IOException>("Bad row %u", 7U), Exception);
    EXPECT_THROW(throw exceptf<IOException>("Bad row %u", 7U), std::exception);
}

/// As a function with a format of its own would build its exception.
IOException inFile(const char* fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    IOException exception = vexceptf<IOException>(fmt, args);
    va_end(args);
    return exception;
}

TEST(Vexceptf, TakesTheArgumentsOfItsCaller) {
    EXPECT_EQ(inFile("Bad row %u in %s", 7U, "table").why(), "Bad row 7 in table");
    EXPECT_EQ(inFile("100%% wrong").why(), "100% wrong");
}

TEST(Exceptf, FormatWithoutArgumentsIsTheMessage) {
    EXPECT_EQ(exceptf<Exception>("100%% wrong").why(), "100% wrong");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-zero-length"
    EXPECT_EQ(exceptf<Exception>("").why(), "");
#pragma GCC diagnostic pop
}

}  // namespace
}  // namespace moxtel

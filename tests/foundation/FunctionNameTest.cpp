#include <gtest/gtest.h>

#include <string>

#include "foundation/FunctionName.h"

namespace ConnectKit {
class Sample {
public:
    Sample() : constructed(CK_FUNCTION) {}
    static std::string Static() { return CK_FUNCTION; }
    const std::string* Pointer() const {
        static const std::string name = CK_FUNCTION;
        return &name;
    }
    std::string operator()(int) const { return CK_FUNCTION; }
    template <class T>
    std::string Templated(T) {
        return CK_FUNCTION;
    }
    std::string constructed;
};
}  // namespace ConnectKit

std::string FreeFunction() {
    return CK_FUNCTION;
}

namespace connectkit::test {
namespace {

TEST(FunctionName, IsTheQualifiedNameWithoutReturnTypeOrParameters) {
    ConnectKit::Sample sample;
    EXPECT_EQ(sample.constructed, "ConnectKit::Sample::Sample");
    EXPECT_EQ(ConnectKit::Sample::Static(), "ConnectKit::Sample::Static");
    EXPECT_EQ(*sample.Pointer(), "ConnectKit::Sample::Pointer");
    EXPECT_EQ(sample(1), "ConnectKit::Sample::operator()");
    EXPECT_EQ(sample.Templated(std::pair<int, int>{}), "ConnectKit::Sample::Templated");
    EXPECT_EQ(FreeFunction(), "FreeFunction");
}

}  // namespace
}  // namespace connectkit::test

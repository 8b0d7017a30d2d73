#pragma once
// CK_FUNCTION: the enclosing function's qualified name as MSVC's __FUNCTION__
// spells it ("ConnectKit::LegacyAP::Start"), which log messages start with.
// GCC and Clang only give the bare name, so it is cut out of
// __PRETTY_FUNCTION__ at compile time. Not for use inside lambdas, whose
// names are the compiler's own.

#include <cstddef>
#include <string_view>

namespace connectkit::detail {

constexpr std::string_view QualifiedName(std::string_view pretty) {
    size_t open = std::string_view::npos;
    int depth = 0;
    for (size_t i = 0; i < pretty.size(); ++i) {
        char c = pretty[i];
        if (c == '<') {
            ++depth;
        } else if (c == '>') {
            --depth;
        } else if (c == '(' && depth == 0) {
            if (pretty.substr(0, i).ends_with("operator")) {
                ++i;
                continue;
            }
            open = i;
            break;
        }
    }
    if (open == std::string_view::npos) {
        return pretty;
    }
    size_t begin = open;
    depth = 0;
    while (begin > 0) {
        char c = pretty[begin - 1];
        if (c == '>') {
            ++depth;
        } else if (c == '<') {
            --depth;
        } else if ((c == ' ' || c == '*' || c == '&') && depth == 0) {
            break;
        }
        --begin;
    }
    return pretty.substr(begin, open - begin);
}

template <size_t N>
struct FunctionName {
    char text[N]{};
    constexpr explicit FunctionName(const char (&pretty)[N]) {
        auto name = QualifiedName(std::string_view(pretty, N - 1));
        for (size_t i = 0; i < name.size(); ++i) {
            text[i] = name[i];
        }
    }
};

}  // namespace connectkit::detail

#if defined(_MSC_VER) && !defined(__clang__)
#define CK_FUNCTION __FUNCTION__
#else
#define CK_FUNCTION                                                                      \
    (__extension__({                                                                     \
        static constexpr ::connectkit::detail::FunctionName<sizeof(__PRETTY_FUNCTION__)> \
            ckFunctionName(__PRETTY_FUNCTION__);                                         \
        ckFunctionName.text;                                                             \
    }))
#endif

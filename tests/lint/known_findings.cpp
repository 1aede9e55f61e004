// Defects that clang-tidy is to find, named at the end of their lines. No part of any program. Most
// concern what a system header declares: the ones that are lost first when headers are passed over.

#include <cassert>
#include <cstdlib>
#include <cstring>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using std::swap;  // finds misc-unused-using-decls

namespace ZR::test {

struct Base {
    virtual void run();
    int number = 0;
};

struct Derived : Base {
    void run();  // finds modernize-use-override
    int more = 0;
};

struct Implicit {
    Implicit(int value);  // finds google-explicit-constructor
    ~Implicit() noexcept(false);
    Implicit(Implicit&& other);  // finds performance-noexcept-move-constructor
};

std::size_t movedFrom(std::string text) {
    const std::string taken = std::move(text);
    const auto rest = text.size();  // finds bugprone-use-after-move clang-analyzer-cplusplus.Move
    return taken.size() + rest;
}

bool compared(const char* left, const char* right) {
    return strcmp(left, right) == -1;  // finds bugprone-suspicious-string-compare
}

std::size_t lengthOf(const std::string text) {  // finds performance-unnecessary-value-param
    return text.empty() ? 0 : text.size();
}

void containers(std::vector<std::pair<int, int>>& pairs, const std::string& text) {
    if (text.size() == 0) {                     // finds readability-container-size-empty
        pairs.push_back(std::make_pair(1, 2));  // finds modernize-use-emplace
    }
    for (const auto element : std::vector<std::string>{text}) {  // finds performance-for-range-copy
        (void)element.compare(text.c_str());  // finds readability-redundant-string-cstr
    }
}

void ignored() {
    std::async([] {});  // finds bugprone-unused-return-value
    std::unique_ptr<int> number(new int(1));
    number.reset(new int(2));       // finds modernize-make-unique
    if (number.get() == nullptr) {  // finds readability-redundant-smartptr-get
        return;
    }
}

void dereferenced() {
    char* text = NULL;  // finds modernize-use-nullptr
    text[0] = 'a';      // finds clang-analyzer-core.NullDereference
}

void leaks() {
    void* memory = malloc(10);
    assert(memory);
}  // finds clang-analyzer-unix.Malloc

int thrown() {
    int number;  // finds cppcoreguidelines-init-variables
    try {
        number = std::stoi("1");
    } catch (std::runtime_error error) {  // finds misc-throw-by-value-catch-by-reference
        number = 0;
    }
    return number;
}

void escapes() noexcept {  // finds bugprone-exception-escape
    throw std::runtime_error("out");
}

TEST(KnownFindings, are_found_in_tests) {
    const std::string text = "abc";
    EXPECT_EQ(0U, sizeof("abc") / sizeof(char*));  // finds bugprone-sizeof-expression
    std::string copy = text;  // finds performance-unnecessary-copy-initialization
    EXPECT_EQ(copy, "abc");
}

}  // namespace ZR::test

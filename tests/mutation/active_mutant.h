// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>

// Included in front of a source that holds many mutants: the environment names the one that is
// active. A binary operator becomes two with a tag between them, "a < Less{7} < b", which keeps its
// precedence.
namespace zarn_mutation {

inline bool isActive(int number)
{
    static const char* const text = std::getenv("ZARN_MUTANT");
    static const int active = text ? std::atoi(text) : -1;
    return active == number;
}

#define ZARN_MUTATION_OPERATOR(tag, original, changed)                                             \
    struct tag {                                                                                   \
        int number;                                                                                \
    };                                                                                             \
    template <typename Left> struct tag##Left {                                                    \
        const Left& left;                                                                          \
        int number;                                                                                \
    };                                                                                             \
    template <typename Left> tag##Left<Left> operator original(const Left& left, tag mutant)       \
    {                                                                                              \
        return {left, mutant.number};                                                              \
    }                                                                                              \
    template <typename Left, typename Right>                                                       \
    requires requires(const Left& left, const Right& right)                                        \
    {                                                                                              \
        left changed right;                                                                        \
    }                                                                                              \
    auto operator original(const tag##Left<Left>& held, const Right& right)                        \
    {                                                                                              \
        return isActive(held.number) ? held.left changed right : held.left original right;         \
    }

ZARN_MUTATION_OPERATOR(Equal, ==, !=)
ZARN_MUTATION_OPERATOR(NotEqual, !=, ==)
ZARN_MUTATION_OPERATOR(Less, <, <=)
ZARN_MUTATION_OPERATOR(LessEqual, <=, <)
ZARN_MUTATION_OPERATOR(Greater, >, >=)
ZARN_MUTATION_OPERATOR(GreaterEqual, >=, >)
ZARN_MUTATION_OPERATOR(Plus, +, -)
ZARN_MUTATION_OPERATOR(Minus, -, +)
ZARN_MUTATION_OPERATOR(Times, *, /)
ZARN_MUTATION_OPERATOR(Divided, /, *)
ZARN_MUTATION_OPERATOR(And, &, |)
ZARN_MUTATION_OPERATOR(Or, |, &)
ZARN_MUTATION_OPERATOR(ShiftedLeft, <<, >>)
ZARN_MUTATION_OPERATOR(ShiftedRight, >>, <<)

#undef ZARN_MUTATION_OPERATOR

} // namespace zarn_mutation

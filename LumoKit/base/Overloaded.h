#pragma once

namespace lumo {

/// A visitor made of lambdas, one per case of a std::variant: std::visit(overloaded{...}, v).
/// The deduction guide is kept because clang before 17 does not deduce aggregates by itself.
template <class... Ts> struct overloaded : Ts... { using Ts::operator()...; };
template <class... Ts> overloaded(Ts...) -> overloaded<Ts...>;

} // namespace lumo

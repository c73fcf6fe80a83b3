// SPDX-License-Identifier: MIT
#pragma once
// Sets of an enumeration with at most 256 members, as the library's set types.

#include <bitset>
#include <initializer_list>
#include <type_traits>

namespace kx {

template <class E>
class TSet {
  static_assert(std::is_enum_v<E> && sizeof(E) == 1, "TSet needs a one-byte enumeration");

public:
  constexpr TSet() = default;
  TSet(std::initializer_list<E> Members) {
    for (E M : Members) Include(M);
  }

  TSet& Include(E M) {
    FBits.set(Index(M));
    return *this;
  }
  TSet& Exclude(E M) {
    FBits.reset(Index(M));
    return *this;
  }
  bool Contains(E M) const { return FBits.test(Index(M)); }
  bool Empty() const { return FBits.none(); }
  size_t Count() const { return FBits.count(); }

  friend TSet operator+(TSet A, const TSet& B) { return A.FBits |= B.FBits, A; }
  friend TSet operator-(TSet A, const TSet& B) { return A.FBits &= ~B.FBits, A; }
  friend TSet operator*(TSet A, const TSet& B) { return A.FBits &= B.FBits, A; }
  friend bool operator==(const TSet& A, const TSet& B) { return A.FBits == B.FBits; }
  // A <= B: every member of A is in B.
  friend bool operator<=(const TSet& A, const TSet& B) { return (A.FBits & ~B.FBits).none(); }

private:
  static size_t Index(E M) {
    return static_cast<size_t>(static_cast<std::underlying_type_t<E>>(M));
  }
  std::bitset<256> FBits;
};

} // namespace kx

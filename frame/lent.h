// A pointer that is set for one scope.
#pragma once

namespace morvunp::frame {

/// Lets `pointer` point at `object` until the scope ends, also by an exception;
/// then it is null again.
template <class T>
class Lent {
 public:
  Lent(T*& pointer, T& object) : m_pointer(pointer) { m_pointer = &object; }
  ~Lent() { m_pointer = nullptr; }
  Lent(const Lent&) = delete;
  Lent& operator=(const Lent&) = delete;

 private:
  T*& m_pointer;
};

}  // namespace morvunp::frame

#pragma once

#include <functional>
#include <string>

#include "support/tempdir.h"

namespace sylvora::test {

// Permission checks mean nothing to root, so as root `body` runs in a child process that has become
// the ordinary user "nobody", owner of `dir`; otherwise it runs right here. `body` returns an empty
// string on success or what went wrong, and must not use GoogleTest assertions (a child's failures
// would be lost).
void runAsOrdinaryUser(const TempDir& dir, const std::function<std::string()>& body);

inline constexpr unsigned kNobody = 65534;

}  // namespace sylvora::test

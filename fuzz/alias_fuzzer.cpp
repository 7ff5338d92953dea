// Alias bytes as the preferences store hands them back: parsed, and when accepted, resolved and
// written out again. An accepted alias must survive its own round trip unchanged.

#include <QByteArray>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "core/files/alias.h"
#include "support/scratch.h"

using namespace sylvora;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::Scratch::makeFixtures();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const AliasHandle alias = Alias::fromBytes(bytes);
    if (!alias) return 0;

    FSRef resolved;
    if (FSResolveAlias(*alias, resolved) == noErr && !resolved.path.startsWith(QLatin1Char('/'))) {
        std::fprintf(stderr, "an alias resolved to a relative path\n");
        std::abort();
    }

    const AliasHandle again = Alias::fromBytes(alias->toBytes());
    if (!again || again->toBytes() != alias->toBytes() || again->recordedPath() != alias->recordedPath()) {
        std::fprintf(stderr, "an accepted alias does not survive its own round trip\n");
        std::abort();
    }
    return 0;
}

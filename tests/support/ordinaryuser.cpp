#include "support/ordinaryuser.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <unistd.h>
#include <QFile>
#include <cstdio>
#include <cstdlib>

namespace sylvora::test {

void runAsOrdinaryUser(const TempDir& dir, const std::function<std::string()>& body) {
    if (::geteuid() != 0) {
        EXPECT_EQ(body(), "");
        return;
    }
    ASSERT_EQ(::chown(QFile::encodeName(dir.path()).constData(), kNobody, kNobody), 0);
    EXPECT_EXIT(
        {
            if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)
                std::_Exit(2);
            const std::string failure = body();
            if (!failure.empty())
                std::fprintf(stderr, "%s\n", failure.c_str());
            std::_Exit(failure.empty() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

}  // namespace sylvora::test

#include "core/common/QtTranslation.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace {

// Qt's own sentences (here a socket's) follow the interface's language, and the translation goes
// with its owner.
TEST(QtTranslation, QtsOwnTextsFollowTheInterfaceLanguage) {
    const auto qtText = [] {
        return QCoreApplication::translate("QAbstractSocket", "Connection refused");
    };
    {
        QtTranslation translation;
        translation.follow(true);
        translation.follow(true);
        EXPECT_EQ(qtText(), QString::fromUtf8("Connexion refusée"));
        translation.follow(false);
        EXPECT_EQ(qtText(), "Connection refused");
        translation.follow(true);
    }
    EXPECT_EQ(qtText(), "Connection refused");
}

} // namespace

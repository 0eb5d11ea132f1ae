#include "core/common/QtTranslation.h"

#include <QCoreApplication>
#include <QLibraryInfo>

QtTranslation::~QtTranslation() {
    follow(false);
}

void QtTranslation::follow(bool french) {
    if (french == (french_ != nullptr))
        return;
    if (!french) {
        QCoreApplication::removeTranslator(french_.get());
        french_.reset();
        return;
    }
    auto translator = std::make_unique<QTranslator>();
    // Without the package Qt's texts stay English; ours are French all the same.
    if (!translator->load(QStringLiteral("qtbase_fr"),
                          QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        return;
    QCoreApplication::installTranslator(translator.get());
    french_ = std::move(translator);
}

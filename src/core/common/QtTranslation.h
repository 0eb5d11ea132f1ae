#pragma once

#include <QTranslator>
#include <memory>

// Qt's own texts (the network failures without a sentence of ours, standard buttons) in the
// user's language, from the translations Debian ships in qt6-translations-l10n.
class QtTranslation {
public:
    ~QtTranslation();
    // Installs Qt's French translation when the interface speaks French, removes it otherwise.
    void follow(bool french);

private:
    std::unique_ptr<QTranslator> french_;
};

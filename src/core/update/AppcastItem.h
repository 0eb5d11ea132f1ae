#pragma once

#include "core/common/Expected.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

// One release offered by an appcast: an RSS 2.0 feed whose items carry Sparkle's version
// fields, either as elements of the item or as attributes of its <enclosure>.
struct AppcastItem {
    // sparkle:shortVersionString, the version people read; sparkle:version when it is absent.
    QString version;
    // Where a person gets it: the item's <link>, else the enclosure's url.
    QUrl downloadPage;

    // The newest usable item of `xml` (one with a version and an http(s) address), or why the
    // feed offers none, in the user's language.
    static Expected<AppcastItem, QString> newestIn(const QByteArray& xml);
};

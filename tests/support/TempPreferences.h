#pragma once

#include "core/common/Preferences.h"

#include <QFile>
#include <QTemporaryDir>
#include <memory>

// A private preference store that is the process's standard store while it lives.
class TempPreferences {
public:
    TempPreferences()
        : store_(std::make_unique<Preferences>(dir_.filePath(QStringLiteral("prefs.json")))) {
        Preferences::setStandard(store_.get());
    }
    ~TempPreferences() { Preferences::setStandard(nullptr); }
    TempPreferences(const TempPreferences&) = delete;
    TempPreferences& operator=(const TempPreferences&) = delete;

    Preferences& operator*() { return *store_; }
    Preferences* operator->() { return store_.get(); }
    QString filePath() const { return store_->filePath(); }
    // The file as written so far.
    QByteArray bytes() const {
        QFile file(filePath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
    }

private:
    QTemporaryDir dir_;
    std::unique_ptr<Preferences> store_;
};

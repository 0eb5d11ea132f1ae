// The preference file as any bytes: written where the store reads it, then every typed accessor
// on every key it holds and on the keys the application reads; then one write and a re-read, as
// the first change of a setting does.
#include "FuzzCheck.h"
#include "core/common/Preferences.h"
#include "core/monitor/PreferenceKeys.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <memory>

namespace {

// Removed with its files when the run ends.
std::unique_ptr<QTemporaryDir> g_folder;

void readEvery(const Preferences& preferences, const QStringList& keys) {
    for (const QString& key : keys) {
        const bool present = preferences.contains(key);
        const bool typed =
            preferences.integer(key).has_value() || preferences.boolean(key).has_value() ||
            preferences.string(key).has_value() || preferences.stringList(key).has_value();
        // A missing key reads as absent through every accessor.
        FUZZ_CHECK(present || !typed);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    static QCoreApplication app(*argc, *argv);
    // Every write of the store ends in fsync: on tmpfs that costs nothing.
    const QString shm = QStringLiteral("/dev/shm");
    g_folder = QDir(shm).exists()
                   ? std::make_unique<QTemporaryDir>(shm + QStringLiteral("/quillon-fuzz-XXXXXX"))
                   : std::make_unique<QTemporaryDir>();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    // A new name each time: the settings cache must not hand back the previous input.
    static quint64 count = 0;
    const QString path = g_folder->filePath(QStringLiteral("p%1.json").arg(++count));
    {
        QFile file(path);
        FUZZ_CHECK(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QStringList keys{PreferenceKeys::monitoredProjectIDs, PreferenceKeys::projectsConfigured,
                     PreferenceKeys::refreshInterval,     PreferenceKeys::notifyOnFailure,
                     PreferenceKeys::countProductionOnly, PreferenceKeys::appLanguage,
                     PreferenceKeys::heroMonochrome,      PreferenceKeys::liveActivity,
                     QStringLiteral("colorSuccess"),      QStringLiteral("colorQueued"),
                     QStringLiteral("colorError")};
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (document.isObject())
        keys += document.object().keys();
    {
        Preferences preferences(path);
        readEvery(preferences, keys);
        preferences.setBoolean(PreferenceKeys::liveActivity, false);
        preferences.reload();
        FUZZ_CHECK(preferences.boolean(PreferenceKeys::liveActivity) == false);
        readEvery(preferences, keys);
    }
    QFile::remove(path);
    return 0;
}

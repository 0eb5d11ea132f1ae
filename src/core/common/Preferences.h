#pragma once

#include <QJsonValue>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

// The per-user preference store: plain key/value pairs in a JSON file under the XDG config
// folder. JSON keeps value kinds apart (an integer stays an integer, a boolean a boolean), so a
// reader can tell a stored value of the wrong type and treat it as absent. Every write reaches
// the file at once; nothing is saved at exit.
class Preferences {
public:
    // Opens (or will create) the store at `filePath`.
    explicit Preferences(const QString& filePath);

    // The store every part of the process reads by default; the file lives at
    // $XDG_CONFIG_HOME/quillon/preferences.json. Tests point it elsewhere with setStandard.
    static Preferences& standard();
    static void setStandard(Preferences* store);
    static QString defaultFilePath();

    QString filePath() const;
    bool contains(const QString& key) const;

    // Each accessor answers absent when the key is missing or holds another kind of value.
    std::optional<qint64> integer(const QString& key) const;
    std::optional<bool> boolean(const QString& key) const;
    std::optional<QString> string(const QString& key) const;
    std::optional<QStringList> stringList(const QString& key) const;
    // A JSON object, its members as QVariant (integers as qint64).
    std::optional<QVariantMap> map(const QString& key) const;

    void setInteger(const QString& key, qint64 value);
    void setBoolean(const QString& key, bool value);
    void setString(const QString& key, const QString& value);
    void setStringList(const QString& key, const QStringList& value);
    void setMap(const QString& key, const QVariantMap& value);
    void remove(const QString& key);

    // Reads the file again (another process may have written it).
    void reload();

private:
    void write(const QString& key, const QVariant& value);

    std::unique_ptr<QSettings> settings_;
};

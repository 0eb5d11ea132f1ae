#pragma once

#include <QList>
#include <QString>
#include <optional>

class Preferences;

// Every preference a person may read or set from a terminal (quillon-cli get / set): its key, what
// kind of value it takes and its value when none is stored, read exactly as the application
// reads it (a stored value of the wrong type counts as absent).
namespace PreferenceCatalog {

enum class Kind {
    boolean,  // true or false
    interval, // whole seconds, 10 to 3600
    language, // auto, en or fr
    color,    // #RRGGBB
    list,     // read only: chosen elsewhere (the monitored projects, the mutes)
};

struct Entry {
    QString key;
    Kind kind;
};

const QList<Entry>& entries();
const Entry* find(const QString& key);

// The value the application works with, as text: the stored one, else the default. A list comes
// one item a line.
QString valueText(const Preferences& preferences, const Entry& entry);

// Stores `text` when it is a value of the entry's kind (written as `valueText` writes it);
// otherwise stores nothing and answers why, in the user's language.
std::optional<QString> set(Preferences& preferences, const Entry& entry, const QString& text);

} // namespace PreferenceCatalog

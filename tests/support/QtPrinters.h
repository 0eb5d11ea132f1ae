#pragma once

#include <QByteArray>
#include <QString>
#include <ostream>

// Lets gtest print Qt texts readably in failure messages (it would dump their bytes otherwise).
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
    *out << '"' << bytes.toStdString() << '"';
}

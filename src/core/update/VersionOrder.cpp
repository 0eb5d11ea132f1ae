#include "core/update/VersionOrder.h"

#include <QList>

namespace {

// The component's digits without leading zeros: numbers of any length compare as text, by
// length first, so "20260101" needs no integer that could overflow.
QStringView number(QStringView component) {
    qsizetype end = 0;
    while (end < component.size() && component[end].isDigit() && component[end].unicode() < 128)
        ++end;
    QStringView digits = component.first(end);
    while (!digits.isEmpty() && digits.front() == u'0')
        digits = digits.sliced(1);
    return digits;
}

// "v1.2" is the tag spelling of "1.2".
QList<QStringView> components(QStringView version) {
    version = version.trimmed();
    if (version.startsWith(u'v', Qt::CaseInsensitive))
        version = version.sliced(1);
    return version.split(u'.');
}

int compareNumbers(QStringView a, QStringView b) {
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return a.compare(b);
}

} // namespace

namespace VersionOrder {

int compare(QStringView a, QStringView b) {
    const QList<QStringView> left = components(a);
    const QList<QStringView> right = components(b);
    const qsizetype count = std::max(left.size(), right.size());
    for (qsizetype i = 0; i < count; ++i) {
        const QStringView x = i < left.size() ? number(left[i]) : QStringView();
        const QStringView y = i < right.size() ? number(right[i]) : QStringView();
        if (const int order = compareNumbers(x, y); order != 0)
            return order < 0 ? -1 : 1;
    }
    return 0;
}

} // namespace VersionOrder

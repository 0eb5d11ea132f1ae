#include "core/update/AppcastItem.h"

#include "core/common/Language.h"
#include "core/update/VersionOrder.h"

#include <QXmlStreamReader>
#include <optional>

namespace {

const QString kSparkle = QStringLiteral("http://www.andymatuschak.org/xml-namespaces/sparkle");

// What one <item> says, elements before enclosure attributes.
struct ItemFields {
    QString version;
    QString shortVersion;
    QString enclosureVersion;
    QString enclosureShortVersion;
    QString link;
    QString enclosureUrl;
};

bool isSparkle(const QXmlStreamReader& reader, QLatin1StringView name) {
    return reader.namespaceUri() == kSparkle && reader.name() == name;
}

void readEnclosure(QXmlStreamReader& reader, ItemFields& fields) {
    const QXmlStreamAttributes attributes = reader.attributes();
    fields.enclosureUrl = attributes.value(QLatin1String("url")).trimmed().toString();
    fields.enclosureVersion =
        attributes.value(kSparkle, QLatin1String("version")).trimmed().toString();
    fields.enclosureShortVersion =
        attributes.value(kSparkle, QLatin1String("shortVersionString")).trimmed().toString();
    reader.skipCurrentElement();
}

ItemFields readItem(QXmlStreamReader& reader) {
    ItemFields fields;
    while (reader.readNextStartElement()) {
        if (isSparkle(reader, QLatin1String("version")))
            fields.version = reader.readElementText().trimmed();
        else if (isSparkle(reader, QLatin1String("shortVersionString")))
            fields.shortVersion = reader.readElementText().trimmed();
        else if (reader.namespaceUri().isEmpty() && reader.name() == QLatin1String("link"))
            fields.link = reader.readElementText().trimmed();
        else if (reader.namespaceUri().isEmpty() && reader.name() == QLatin1String("enclosure"))
            readEnclosure(reader, fields);
        else
            reader.skipCurrentElement();
    }
    return fields;
}

std::optional<QUrl> webAddress(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    if (url.scheme() != QLatin1String("https") && url.scheme() != QLatin1String("http"))
        return std::nullopt;
    return url;
}

QString firstOf(std::initializer_list<QString> candidates) {
    for (const QString& candidate : candidates)
        if (!candidate.isEmpty())
            return candidate;
    return {};
}

std::optional<AppcastItem> usable(const ItemFields& fields) {
    const QString version = firstOf({fields.shortVersion, fields.enclosureShortVersion,
                                     fields.version, fields.enclosureVersion});
    if (version.isEmpty())
        return std::nullopt;
    std::optional<QUrl> page = webAddress(fields.link);
    if (!page)
        page = webAddress(fields.enclosureUrl);
    if (!page)
        return std::nullopt;
    return AppcastItem{version, *page};
}

// Every usable item of the channel, the newest kept; the reader is left past the channel.
void readChannel(QXmlStreamReader& reader, std::optional<AppcastItem>& newest) {
    while (reader.readNextStartElement()) {
        if (reader.namespaceUri().isEmpty() && reader.name() == QLatin1String("item")) {
            const std::optional<AppcastItem> item = usable(readItem(reader));
            if (item && (!newest || VersionOrder::isNewer(item->version, newest->version)))
                newest = item;
        } else {
            reader.skipCurrentElement();
        }
    }
}

QString malformed(const QXmlStreamReader& reader) {
    return Language::text("the feed is not valid XML (line %1).",
                          "le flux n'est pas un XML valide (ligne %1).")
        .arg(reader.lineNumber());
}

} // namespace

Expected<AppcastItem, QString> AppcastItem::newestIn(const QByteArray& xml) {
    QXmlStreamReader reader(xml);
    if (reader.readNextStartElement() && reader.name() != QLatin1String("rss"))
        return Language::text("the feed is not an RSS appcast.",
                              "le flux n'est pas un appcast RSS.");
    std::optional<AppcastItem> newest;
    while (!reader.hasError() && reader.readNextStartElement()) {
        if (reader.name() == QLatin1String("channel"))
            readChannel(reader, newest);
        else
            reader.skipCurrentElement();
    }
    // Read to the end, so damage after the items still counts.
    while (!reader.atEnd())
        reader.readNext();
    if (reader.hasError())
        return malformed(reader);
    if (!newest)
        return Language::text("the feed offers no version.", "le flux ne propose aucune version.");
    return *newest;
}

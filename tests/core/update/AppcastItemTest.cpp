#include "core/update/AppcastItem.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace {

QByteArray feed(const QByteArray& items) {
    return R"(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">
<channel><title>Quillon</title><link>https://fernhollow.com/quillon</link>)" +
           items + "</channel></rss>";
}

} // namespace

TEST(AppcastItem, PicksTheNewestUsableItemWhereverItsFieldsAre) {
    const Expected<AppcastItem, QString> newest = AppcastItem::newestIn(feed(R"(
<item><title>1.9</title><sparkle:version>1.9</sparkle:version>
  <link>https://fernhollow.com/quillon/1.9</link></item>
<item><title>1.10</title>
  <enclosure url="https://dl.fernhollow.com/quillon-1.10.deb" sparkle:version="57"
             sparkle:shortVersionString="1.10" length="1" type="application/octet-stream"/></item>
<item><title>no address</title><sparkle:version>9.0</sparkle:version></item>
<item><title>no version</title><link>https://fernhollow.com/quillon/9</link></item>
<item><sparkle:version>8.0</sparkle:version><link>javascript:alert(1)</link></item>
<item><sparkle:version>1.2</sparkle:version><link>https://fernhollow.com/quillon/1.2</link></item>
)"));
    ASSERT_TRUE(newest) << newest.error().toStdString();
    EXPECT_EQ(newest->version, "1.10");
    EXPECT_EQ(newest->downloadPage, QUrl("https://dl.fernhollow.com/quillon-1.10.deb"));

    // The link and the short version element win over the enclosure's.
    const Expected<AppcastItem, QString> item = AppcastItem::newestIn(feed(R"(
<item><sparkle:version>203</sparkle:version>
  <sparkle:shortVersionString>2.1</sparkle:shortVersionString>
  <link> https://fernhollow.com/quillon/2.1 </link>
  <enclosure url="https://dl.fernhollow.com/quillon-2.1.deb" sparkle:version="203"/></item>)"));
    ASSERT_TRUE(item);
    EXPECT_EQ(item->version, "2.1");
    EXPECT_EQ(item->downloadPage, QUrl("https://fernhollow.com/quillon/2.1"));
}

TEST(AppcastItem, TellsWhyAFeedOffersNothing) {
    const auto reason = [](const QByteArray& xml) {
        const Expected<AppcastItem, QString> item = AppcastItem::newestIn(xml);
        return item ? QStringLiteral("found %1").arg(item->version) : item.error();
    };
    EXPECT_EQ(reason(feed("")), "the feed offers no version.");
    EXPECT_EQ(reason("<html><body>Not found</body></html>"), "the feed is not an RSS appcast.");
    EXPECT_TRUE(reason(feed("<item><sparkle:version>2</sparkle:version>"))
                    .startsWith("the feed is not valid XML"));
    // Damage after the items still makes the feed unreadable.
    EXPECT_TRUE(reason(feed(R"(<item><sparkle:version>2</sparkle:version>
<link>https://x.example/</link></item>)") +
                       "<rss>")
                    .startsWith("the feed is not valid XML"));
    EXPECT_TRUE(reason("").startsWith("the feed is not valid XML"));
    // An undeclared prefix is not Sparkle's namespace.
    EXPECT_TRUE(reason("<rss><channel><item><sparkle:version>2</sparkle:version></item></channel>"
                       "</rss>")
                    .startsWith("the feed is not valid XML"));
}

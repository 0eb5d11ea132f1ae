#include "ui/settings/AboutSettings.h"

#include "core/common/AppVersion.h"
#include "core/common/Language.h"
#include "ui/settings/FormSection.h"
#include "ui/status/StatusPalette.h"
#include "ui/status/ToneIcon.h"

#include <QLabel>
#include <QVBoxLayout>

namespace {

constexpr int emblemPixels = 72;

QString linkHtml(const QString& url, const QString& label) {
    return QStringLiteral("<a href=\"%1\">%2</a>").arg(url, label.toHtmlEscaped());
}

} // namespace

AboutSettings::AboutSettings(const StatusPalette& palette, QWidget* parent) : QWidget(parent) {
    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(24, 28, 24, 28);
    root->setSpacing(6);
    root->addStretch(1);

    auto* emblem = new QLabel(this);
    const double dpr = devicePixelRatioF();
    QImage image =
        ToneIcon::draw({palette.success(), false, {}, {}}, static_cast<int>(emblemPixels * dpr));
    image.setDevicePixelRatio(dpr);
    emblem->setPixmap(QPixmap::fromImage(image));
    root->addWidget(emblem, 0, Qt::AlignHCenter);
    root->addSpacing(8);

    title_ = new QLabel(QStringLiteral("Quillon"), this);
    FormSection::setPixels(title_, 22);
    QFont bold = title_->font();
    bold.setWeight(QFont::Bold);
    title_->setFont(bold);
    version_ = new QLabel(QStringLiteral("Version ") + AppVersion::text(), this);
    FormSection::makeSecondary(version_);
    tagline_ = new QLabel(Language::text("Every Vercel deployment, at a glance from the tray.",
                                         "Chaque déploiement Vercel, d'un coup d'œil depuis la "
                                         "zone de notification."),
                          this);
    tagline_->setWordWrap(true);
    tagline_->setAlignment(Qt::AlignHCenter);
    links_ =
        new QLabel(QStringList{linkHtml(QStringLiteral("https://fernhollow.com"),
                                        QStringLiteral("Fernhollow")),
                               linkHtml(QStringLiteral("https://fernhollow.com/quillon/privacy"),
                                        Language::text("Privacy", "Confidentialité")),
                               linkHtml(QStringLiteral("mailto:support@fernhollow.com"),
                                        Language::text("Support", "Assistance"))}
                       .join(QStringLiteral("&nbsp;&nbsp;·&nbsp;&nbsp;")),
                   this);
    links_->setTextFormat(Qt::RichText);
    links_->setOpenExternalLinks(true);
    root->addWidget(title_, 0, Qt::AlignHCenter);
    root->addWidget(version_, 0, Qt::AlignHCenter);
    // The full width, so the wrapped sentence is never narrower than its own words.
    root->addWidget(tagline_);
    root->addSpacing(12);
    root->addWidget(links_, 0, Qt::AlignHCenter);
    root->addStretch(1);
}

#include "ui/settings/UpdatesSection.h"

#include "core/common/AppVersion.h"
#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/update/UpdateService.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

const QString UpdatesSection::automaticChecksKey = QStringLiteral("SUEnableAutomaticChecks");

UpdatesSection::UpdatesSection(Preferences& preferences, UpdateService* updater, QWidget* parent)
    : FormSection(Language::text("Updates", "Mises à jour"), parent), preferences_(preferences),
      updater_(updater) {
    automatic_ = new QCheckBox(Language::text("Check for updates automatically",
                                              "Vérifier les mises à jour automatiquement"));
    automatic_->setChecked(automaticChecks(preferences_));
    addRow(automatic_);

    // Version, "Check now" and, under them, what the last check found.
    auto* row = new QWidget;
    auto* column = new QVBoxLayout(row);
    column->setContentsMargins(0, 0, 0, 0);
    auto* line = new QHBoxLayout;
    version_ = new QLabel(QStringLiteral("Version ") + AppVersion::shortVersion(), row);
    makeSecondary(version_);
    line->addWidget(version_, 1);
    check_ = new QPushButton(Language::text("Check now", "Vérifier maintenant"), row);
    line->addWidget(check_);
    column->addLayout(line);
    result_ = secondaryLabel({}, footerPixels, row);
    result_->setTextFormat(Qt::RichText);
    result_->setOpenExternalLinks(true);
    column->addWidget(result_);
    addRow(row);

    connect(automatic_, &QCheckBox::clicked, this, &UpdatesSection::setAutomatic);
    if (updater_) {
        connect(check_, &QPushButton::clicked, updater_, &UpdateService::checkForUpdates);
        connect(check_, &QPushButton::clicked, this, &UpdatesSection::refresh);
        connect(updater_, &UpdateService::resultChanged, this, &UpdatesSection::refresh);
    }
    refresh();
}

bool UpdatesSection::automaticChecks(const Preferences& preferences) {
    return preferences.boolean(automaticChecksKey).value_or(true);
}

void UpdatesSection::setAutomatic(bool on) {
    preferences_.setBoolean(automaticChecksKey, on);
    if (updater_)
        updater_->setAutomaticallyChecksForUpdates(on);
}

void UpdatesSection::refresh() {
    check_->setEnabled(updater_ && !updater_->isChecking());
    const QString text = updater_ ? updater_->resultText() : QString();
    QString html = text.toHtmlEscaped();
    if (updater_) {
        if (const std::optional<QUrl> page = updater_->downloadPage())
            html += QStringLiteral(" <a href=\"%1\">%2</a>")
                        .arg(page->toString(QUrl::FullyEncoded),
                             Language::text("Download", "Télécharger"));
    }
    result_->setText(html);
    result_->setVisible(!html.isEmpty());
}

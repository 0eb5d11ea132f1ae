#include "ui/settings/ColorsSection.h"

#include "core/common/Language.h"
#include "ui/settings/ColorWell.h"
#include "ui/status/ColorPreview.h"
#include "ui/status/StatusPalette.h"

#include <QHBoxLayout>
#include <QPushButton>

ColorsSection::ColorsSection(StatusPalette& palette, ColorPreview* preview, QWidget* parent)
    : FormSection(Language::text("Colors", "Couleurs"), parent), palette_(palette),
      preview_(preview) {
    success_ =
        addWell(Language::text("Success and build", "Succès et build"), &StatusPalette::setSuccess);
    queued_ = addWell(Language::text("Queued", "En attente"), &StatusPalette::setQueued);
    error_ = addWell(Language::text("Failure", "Échec"), &StatusPalette::setError);

    auto* buttons = new QWidget;
    auto* layout = new QHBoxLayout(buttons);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch(1);
    test_ = new QPushButton(Language::text("Test", "Tester"), buttons);
    reset_ = new QPushButton(Language::text("Reset", "Réinitialiser"), buttons);
    layout->addWidget(test_);
    layout->addWidget(reset_);
    addRow(buttons);
    setFooter(Language::text("Applied to the tray icon, the panel and the Live Activity. ",
                             "Appliquées à l'icône de la zone de notification, au panneau et à "
                             "l'activité en direct. ") +
              Language::text("Test plays a fake deployment, nothing is sent to Vercel.",
                             "Tester joue un faux déploiement, sans rien envoyer à Vercel."));

    connect(reset_, &QPushButton::clicked, &palette_, &StatusPalette::reset);
    if (preview_) {
        connect(test_, &QPushButton::clicked, preview_, &ColorPreview::previewColors);
        connect(preview_, &ColorPreview::previewingChanged, this, &ColorsSection::refresh);
    }
    connect(&palette_, &StatusPalette::changed, this, &ColorsSection::refresh);
    refresh();
}

ColorWell* ColorsSection::addWell(const QString& label,
                                  void (StatusPalette::*setter)(const QColor&)) {
    auto* well = new ColorWell(label);
    connect(well, &ColorWell::colorPicked, this,
            [palette = &palette_, setter](const QColor& color) { (palette->*setter)(color); });
    addLabeledRow(label, well);
    return well;
}

void ColorsSection::refresh() {
    success_->setColor(palette_.success());
    queued_->setColor(palette_.queued());
    error_->setColor(palette_.error());
    test_->setEnabled(preview_ && !preview_->isPreviewingColors());
    reset_->setEnabled(!palette_.isDefault());
}

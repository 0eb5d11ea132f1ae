#include "ui/settings/GeneralSettings.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "ui/settings/ColorsSection.h"
#include "ui/settings/FormSection.h"
#include "ui/settings/SymbolRow.h"
#include "ui/settings/UpdatesSection.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace {

QComboBox* picker(const QList<std::pair<QString, QVariant>>& options) {
    auto* combo = new QComboBox;
    for (const auto& [label, value] : options)
        combo->addItem(label, value);
    return combo;
}

void select(QComboBox* combo, const QVariant& value) {
    const QSignalBlocker quiet(combo);
    combo->setCurrentIndex(combo->findData(value));
}

void check(QCheckBox* box, bool on) {
    const QSignalBlocker quiet(box);
    box->setChecked(on);
}

} // namespace

GeneralSettings::GeneralSettings(AppState& state, StatusPalette& palette, ColorPreview* preview,
                                 UpdateService* updater, QWidget* parent)
    : QWidget(parent), state_(state) {
    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(20, 16, 20, 20);
    root->setSpacing(18);
    buildGeneral(this);
    live_ = addToggleSection(
        {},
        Language::text("Live Activity during a deployment",
                       "Activité en direct pendant un déploiement"),
        Language::text("A capsule appears under the tray icon during the build, then shows the "
                       "result for a few seconds.",
                       "Une capsule apparaît sous l'icône de la zone de notification pendant le "
                       "build, puis affiche le résultat quelques secondes."),
        &AppState::setLiveActivity);
    colors_ = new ColorsSection(palette, preview, this);
    root->addWidget(colors_);
    notify_ = addToggleSection(
        {},
        Language::text("Notify when a deployment fails", "Notifier quand un déploiement échoue"),
        Language::text("No notification on success: only a failure deserves your attention.",
                       "Aucune notification pour les succès : seul un échec mérite votre "
                       "attention."),
        &AppState::setNotifyOnFailure);
    buildNoise();
    slowBuild_ = addToggleSection(
        {},
        Language::text("Warn when a build takes longer than usual",
                       "Avertir quand un build dure plus longtemps que d'habitude"),
        Language::text("After twice the project's usual build time, and at least 2 minutes.",
                       "Après deux fois la durée habituelle du projet, et au moins 2 minutes."),
        &AppState::setSlowBuildWarning);
    productionOnly_ = addToggleSection(
        Language::text("Today counter", "Compteur du jour"),
        Language::text("Count production deployments only",
                       "Compter seulement les déploiements de production"),
        Language::text("The number shown in the tray resets every day at midnight.",
                       "Le nombre affiché dans la zone de notification est remis à zéro chaque "
                       "jour à minuit."),
        &AppState::setCountProductionOnly);
    updates_ = new UpdatesSection(state_.preferences(), updater, this);
    root->addWidget(updates_);

    errorSection_ = new FormSection({}, this);
    error_ = new SymbolRow(FormSection::footerPixels, 13);
    FormSection::makeSecondary(error_->textLabel());
    errorSection_->addRow(error_);
    root->addWidget(errorSection_);
    root->addStretch(1);

    connect(&state_, &AppState::preferencesChanged, this, &GeneralSettings::refresh);
    connect(&state_, &AppState::lastErrorChanged, this, &GeneralSettings::refresh);
    refresh();
}

void GeneralSettings::buildGeneral(QWidget* parent) {
    auto* section = new FormSection({}, parent);
    language_ = picker(
        {{Language::text("Automatic (system)", "Automatique (système)"), QStringLiteral("auto")},
         {QStringLiteral("Français"), QStringLiteral("fr")},
         {QStringLiteral("English"), QStringLiteral("en")}});
    section->addLabeledRow(Language::text("Language", "Langue"), language_);
    interval_ = picker({{QStringLiteral("15 s"), 15},
                        {QStringLiteral("30 s"), 30},
                        {QStringLiteral("60 s"), 60},
                        {QStringLiteral("2 min"), 120}});
    section->addLabeledRow(Language::text("Check interval", "Intervalle de vérification"),
                           interval_);
    hero_ = new QCheckBox(Language::text("Black and white hero", "Hero en noir et blanc"));
    section->addRow(hero_);
    login_ = new QCheckBox(Language::text("Open at login", "Ouvrir à l'ouverture de session"));
    section->addRow(login_);
    section->setFooter(
        Language::text("During a build, checks automatically speed up to every 8 seconds.",
                       "Pendant un build, la vérification passe automatiquement à 8 secondes."));
    parent->layout()->addWidget(section);

    connect(language_, &QComboBox::activated, this,
            [this] { state_.setLanguage(language_->currentData().toString()); });
    connect(interval_, &QComboBox::activated, this,
            [this] { state_.setRefreshInterval(interval_->currentData().toInt()); });
    connect(hero_, &QCheckBox::clicked, &state_, &AppState::setHeroMonochrome);
    // The toggle then shows what the login item really is, so a refused change snaps back.
    connect(login_, &QCheckBox::clicked, this, [this](bool on) {
        state_.setLaunchAtLogin(on);
        refresh();
    });
}

void GeneralSettings::buildNoise() {
    auto* section = new FormSection(Language::text("Less noise", "Moins de bruit"), this);
    auto toggle = [&](const QString& text, void (AppState::*setter)(bool)) {
        auto* box = new QCheckBox(text);
        section->addRow(box);
        connect(box, &QCheckBox::clicked, this,
                [state = &state_, setter](bool on) { (state->*setter)(on); });
        return box;
    };
    notifyProduction_ = toggle(
        Language::text("Production deployments only", "Déploiements de production seulement"),
        &AppState::setNotifyProductionOnly);
    onlyMine_ = toggle(Language::text("Only my deployments", "Seulement mes déploiements"),
                       &AppState::setNotifyOnlyMine);
    bots_ = toggle(Language::text("Ignore dependency bots (dependabot/, renovate/)",
                                  "Ignorer les robots de dépendances (dependabot/, renovate/)"),
                   &AppState::setIgnoreBotBranches);
    fixed_ = toggle(Language::text("Notify when a failed project is live again",
                                   "Notifier quand un projet en échec est de nouveau en ligne"),
                    &AppState::setNotifyWhenFixed);
    section->setFooter(Language::text(
        "Notifications and the capsule follow these; the panel and the tray still show every "
        "deployment. To mute one project, right-click its row in the panel.",
        "Les notifications et la capsule les suivent ; le panneau et l'icône montrent toujours "
        "chaque déploiement. Pour mettre un projet en sourdine, faites un clic droit sur sa ligne "
        "dans le panneau."));
    layout()->addWidget(section);
}

QCheckBox* GeneralSettings::addToggleSection(const QString& header, const QString& toggle,
                                             const QString& footer,
                                             void (AppState::*setter)(bool)) {
    auto* section = new FormSection(header, this);
    auto* box = new QCheckBox(toggle);
    section->addRow(box);
    section->setFooter(footer);
    layout()->addWidget(section);
    connect(box, &QCheckBox::clicked, this,
            [state = &state_, setter](bool on) { (state->*setter)(on); });
    return box;
}

void GeneralSettings::refresh() {
    select(language_, state_.language());
    select(interval_, state_.refreshInterval());
    check(hero_, state_.heroMonochrome());
    check(login_, state_.launchAtLogin());
    check(live_, state_.liveActivity());
    check(notify_, state_.notifyOnFailure());
    check(slowBuild_, state_.slowBuildWarning());
    check(productionOnly_, state_.countProductionOnly());
    check(notifyProduction_, state_.notifyProductionOnly());
    check(onlyMine_, state_.notifyOnlyMine());
    check(bots_, state_.ignoreBotBranches());
    check(fixed_, state_.notifyWhenFixed());
    const std::optional<QString>& error = state_.lastError();
    errorSection_->setVisible(error.has_value());
    if (error)
        error_->set(QStringLiteral("exclamationmark.triangle"),
                    FormSection::secondaryColor(palette()), *error);
}

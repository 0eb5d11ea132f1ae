#include "ui/settings/VercelSettings.h"

#include "core/common/Language.h"
#include "core/keychain/KeychainMode.h"
#include "core/monitor/AppState.h"
#include "ui/common/SymbolArt.h"
#include "ui/settings/FormSection.h"
#include "ui/settings/ProjectPicker.h"
#include "ui/settings/SymbolRow.h"
#include "ui/status/StatusPalette.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int statusPixels = 12;
constexpr int detailPixels = 11;

// Conventional red for the one destructive action, legible on light and dark surfaces.
const QColor destructiveRed(0xd0, 0x2b, 0x3a);

QString footerHtml() {
    const QString link =
        Language::text("Create a token on vercel.com", "Créer un jeton sur vercel.com");
    const QString advice = Language::text(
        "When creating it, pick the “No Expiration” option and your team scope. Otherwise "
        "Vercel disables the token on that date, whatever the app.",
        "À la création, choisissez l'expiration « No Expiration » et la portée de votre équipe. "
        "Sinon Vercel désactive le jeton à la date choisie, peu importe l'application.");
    return QStringLiteral("<a href=\"%1\">%2</a><div style=\"margin-top:6px\">%3</div>")
        .arg(VercelSettings::tokenPage().toString(), link.toHtmlEscaped(), advice.toHtmlEscaped());
}

} // namespace

VercelSettings::VercelSettings(AppState& state, StatusPalette& palette, QWidget* parent)
    : QWidget(parent), state_(state), palette_(palette) {
    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(20, 16, 20, 20);
    root->setSpacing(18);
    root->addWidget(FormSection::secondaryLabel(
        Language::text("Paste an access token once. It is kept in your keyring.",
                       "Collez un jeton d'accès une seule fois. Il est conservé dans votre "
                       "trousseau."),
        statusPixels, this));

    tokenSection_ = new FormSection(Language::text("Vercel access token", "Jeton d'accès Vercel"));
    tokenSection_->addRow(buildTokenRow());
    auto* details = new QWidget;
    auto* detailLayout = new QVBoxLayout(details);
    detailLayout->setContentsMargins(0, 0, 0, 0);
    detailLayout->setSpacing(8);
    status_ = new SymbolRow(statusPixels, 14, details);
    notices_ = new SymbolRow(detailPixels, 13, details);
    expiry_ = new SymbolRow(detailPixels, 13, details);
    storage_ = new SymbolRow(detailPixels, 13, details);
    FormSection::makeSecondary(expiry_->textLabel());
    FormSection::makeSecondary(storage_->textLabel());
    for (QWidget* row : {status_, notices_, expiry_, storage_})
        detailLayout->addWidget(row);
    tokenSection_->addRow(details);
    QLabel* footer = tokenSection_->setFooter(footerHtml());
    footer->setTextFormat(Qt::RichText);
    footer->setOpenExternalLinks(true);
    root->addWidget(tokenSection_);

    picker_ = new ProjectPicker(state_, this);
    root->addWidget(picker_);

    auto* removal = new FormSection;
    remove_ = new QPushButton(
        Language::text("Remove token from this computer", "Supprimer le jeton de cet ordinateur"));
    remove_->setIcon(SymbolArt::icon(QStringLiteral("trash"), destructiveRed));
    QPalette red = remove_->palette();
    red.setColor(QPalette::ButtonText, destructiveRed);
    remove_->setPalette(red);
    connect(remove_, &QPushButton::clicked, this, &VercelSettings::askRemoval);
    auto* removalRow = new QWidget;
    auto* removalLayout = new QHBoxLayout(removalRow);
    removalLayout->setContentsMargins(0, 0, 0, 0);
    removalLayout->addWidget(remove_);
    removalLayout->addStretch(1);
    removal->addRow(removalRow);
    removal_ = removal;
    root->addWidget(removal_);
    root->addStretch(1);

    connect(&state_, &AppState::changed, this, &VercelSettings::refresh);
    connect(&palette_, &StatusPalette::changed, this, &VercelSettings::refresh);
    refresh();
}

QUrl VercelSettings::tokenPage() {
    return QUrl(QStringLiteral("https://vercel.com/account/settings/tokens"));
}

QWidget* VercelSettings::buildTokenRow() {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    field_ = new QLineEdit(row);
    field_->setPlaceholderText(
        Language::text("Paste your Vercel access token", "Collez votre jeton d'accès Vercel"));
    field_->setEchoMode(QLineEdit::Password);
    field_->setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhNoPredictiveText |
                                Qt::ImhNoAutoUppercase);
    field_->setAccessibleName(Language::text("Vercel access token", "Jeton d'accès Vercel"));
    layout->addWidget(field_, 1);

    reveal_ = new QToolButton(row);
    reveal_->setAutoRaise(true);
    reveal_->setCheckable(true);
    reveal_->setToolTip(Language::text("Show or hide", "Afficher ou masquer"));
    reveal_->setAccessibleName(reveal_->toolTip());
    layout->addWidget(reveal_);

    submit_ = new QPushButton(row);
    QPalette prominent = submit_->palette();
    prominent.setColor(QPalette::Button, prominent.color(QPalette::Highlight));
    prominent.setColor(QPalette::ButtonText, prominent.color(QPalette::HighlightedText));
    submit_->setPalette(prominent);
    layout->addWidget(submit_);

    connect(reveal_, &QToolButton::toggled, this, &VercelSettings::setReveal);
    connect(field_, &QLineEdit::textChanged, this, &VercelSettings::updateSubmit);
    connect(field_, &QLineEdit::returnPressed, this, &VercelSettings::submit);
    connect(submit_, &QPushButton::clicked, this, &VercelSettings::submit);
    setReveal(false);
    updateSubmit();
    return row;
}

void VercelSettings::setReveal(bool reveal) {
    revealing_ = reveal;
    field_->setEchoMode(reveal ? QLineEdit::Normal : QLineEdit::Password);
    reveal_->setIcon(SymbolArt::icon(reveal ? QStringLiteral("eye.slash") : QStringLiteral("eye"),
                                     palette().color(QPalette::WindowText)));
}

void VercelSettings::updateSubmit() {
    submit_->setEnabled(!field_->text().trimmed().isEmpty());
}

void VercelSettings::submit() {
    const QString copy = field_->text();
    field_->clear();
    if (copy.trimmed().isEmpty())
        return;
    state_.saveToken(copy); // runs on; its effects arrive through AppState's signals
}

void VercelSettings::askRemoval() {
    if (question_)
        return;
    // Window-modal and answered through a signal: no nested event loop.
    auto* box = new QMessageBox(
        QMessageBox::Warning, Language::text("Remove the token?", "Supprimer le jeton ?"),
        Language::text("Remove the token?", "Supprimer le jeton ?"), QMessageBox::NoButton, this);
    box->setInformativeText(Language::text(
        "The token will be removed from your keyring. You will need to paste it again.",
        "Le jeton sera retiré de votre trousseau. Vous devrez le coller à nouveau."));
    QPushButton* remove =
        box->addButton(Language::text("Remove", "Supprimer"), QMessageBox::DestructiveRole);
    QPushButton* cancel =
        box->addButton(Language::text("Cancel", "Annuler"), QMessageBox::RejectRole);
    box->setDefaultButton(cancel);
    box->setEscapeButton(cancel);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QMessageBox::buttonClicked, this, [this, remove](QAbstractButton* clicked) {
        if (clicked == remove)
            state_.removeToken();
    });
    question_ = box;
    box->open();
}

QLabel* VercelSettings::footer() const {
    return tokenSection_->footer();
}

QString VercelSettings::expiryText(const TokenExpiry& expiry) {
    switch (expiry.kind) {
    case TokenExpiry::Kind::at: {
        // The user's locale, unless it speaks another language than the interface.
        QLocale locale;
        if (Language::isFrench() != (locale.language() == QLocale::French))
            locale = QLocale(Language::isFrench() ? QLocale::French : QLocale::English);
        // The long date without its weekday: "24 November 2026", "November 24, 2026".
        QString format = locale.dateFormat(QLocale::LongFormat);
        format.remove(QRegularExpression(QStringLiteral("d{4}[,.]?\\s*")));
        const QString date = locale.toString(expiry.date.toLocalTime().date(), format.trimmed());
        return Language::text("Warning: Vercel will disable this token on %1. Create a new one "
                              "with “No Expiration” so you never have to paste it again.",
                              "Attention : Vercel désactivera ce jeton le %1. Créez-en un "
                              "nouveau avec « No Expiration » pour ne plus jamais le ressaisir.")
            .arg(date);
    }
    case TokenExpiry::Kind::never:
        return Language::text("Token has no expiration on Vercel's side. It will never be "
                              "disabled automatically.",
                              "Jeton sans date d'expiration côté Vercel. Il ne sera jamais "
                              "désactivé automatiquement.");
    case TokenExpiry::Kind::unknown:
        break;
    }
    return {};
}

void VercelSettings::refresh() {
    const bool stored = state_.keychainMode().has_value();
    submit_->setText(stored ? Language::text("Replace", "Remplacer")
                            : Language::text("Connect", "Connecter"));
    refreshStatus();
    refreshDetails();
    const bool connected = state_.connection().isConnected();
    picker_->setVisible(connected);
    if (connected)
        picker_->refresh();
    removal_->setVisible(stored);
}

void VercelSettings::refreshStatus() {
    const Connection& connection = state_.connection();
    const QColor secondary = FormSection::secondaryColor(palette());
    QPalette text = palette();
    const bool primary = connection.kind == Connection::Kind::connected;
    text.setColor(QPalette::WindowText,
                  primary ? palette().color(QPalette::WindowText) : secondary);
    status_->textLabel()->setPalette(text);
    switch (connection.kind) {
    case Connection::Kind::connected:
        status_->set(QStringLiteral("checkmark.circle.fill"), palette_.success(),
                     Language::text("Connected as ", "Connecté en tant que ") + connection.detail);
        break;
    case Connection::Kind::failed:
        status_->set(QStringLiteral("xmark.circle.fill"), palette_.error(), connection.detail);
        break;
    case Connection::Kind::retrying:
        status_->set(QStringLiteral("arrow.clockwise"), secondary, state_.connectionMessage());
        break;
    case Connection::Kind::noToken:
        status_->set(QStringLiteral("circle.dashed"), secondary,
                     Language::text("No token saved", "Aucun jeton enregistré"));
        break;
    case Connection::Kind::checking:
        status_->setSpinner(secondary, Language::text("Checking…", "Vérification…"));
        break;
    }
}

void VercelSettings::refreshDetails() {
    const QStringList notices =
        state_.connection().isConnected() ? state_.notices() : QStringList();
    notices_->setVisible(!notices.isEmpty());
    if (!notices.isEmpty())
        notices_->set(QStringLiteral("exclamationmark.triangle.fill"), palette_.queued(),
                      notices.join(QLatin1Char('\n')));
    const TokenExpiry& expiry = state_.tokenExpiry();
    const bool showExpiry =
        state_.connection().isConnected() && expiry.kind != TokenExpiry::Kind::unknown;
    expiry_->setVisible(showExpiry);
    if (showExpiry)
        expiry_->set(expiry.kind == TokenExpiry::Kind::at
                         ? QStringLiteral("exclamationmark.triangle.fill")
                         : QStringLiteral("infinity"),
                     palette_.success(), expiryText(expiry));
    const std::optional<KeychainMode> mode = state_.keychainMode();
    storage_->setVisible(mode.has_value());
    if (mode)
        storage_->set(*mode == KeychainMode::synced ? QStringLiteral("key")
                                                    : QStringLiteral("lock.fill"),
                      FormSection::secondaryColor(palette()), storageDescription(*mode));
}

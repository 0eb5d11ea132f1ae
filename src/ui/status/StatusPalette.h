#pragma once

#include "core/monitor/ConnectionState.h"
#include "core/vercel/DeployStatus.h"

#include <QColor>
#include <QObject>
#include <QString>
#include <QStringView>
#include <optional>

class Preferences;

// The three colours that carry every state in the interface: success (also building), waiting
// and failure. There is one palette per process; it is handed to whoever draws with it. Each
// assignment writes all three colours to the preferences at once.
class StatusPalette : public QObject {
    Q_OBJECT
    Q_PROPERTY(QColor success READ success WRITE setSuccess NOTIFY changed)
    Q_PROPERTY(QColor queued READ queued WRITE setQueued NOTIFY changed)
    Q_PROPERTY(QColor error READ error WRITE setError NOTIFY changed)
public:
    static const QString defaultSuccessHex; // "#0CF1E8"
    static const QString defaultQueuedHex;  // "#C05BEC"

    // QUILLON_ERROR_COLOR as written when it parses, otherwise "#FF0074"; read once per process.
    static const QString& defaultErrorHex();
    // The same rule for a given environment value (absent when the variable is not set).
    static QString defaultErrorHexFrom(const std::optional<QString>& environmentValue);

    // Loads the stored colours; a stored text that does not parse leaves the default in place.
    explicit StatusPalette(Preferences& preferences, QString defaultError = defaultErrorHex(),
                           QObject* parent = nullptr);

    QColor success() const { return success_; }
    QColor queued() const { return queued_; }
    QColor error() const { return error_; }
    void setSuccess(const QColor& color);
    void setQueued(const QColor& color);
    void setError(const QColor& color);
    // Back to the built-in colours, saved like any assignment.
    void reset();
    // Reads the stored colours again (quillon-cli may have set them); changes nothing stored.
    void reload();

    // The three texts equal the defaults exactly (an environment value in lower case or without
    // "#" never does, since the formatter writes "#RRGGBB").
    bool isDefault() const;
    // "#0CF1E8#C05BEC#FF0074" for the defaults: changes whenever any colour does.
    QString signature() const;

    QColor statusColor(DeployStatus status) const;
    // None for disconnected and idle: those are drawn in the desktop's own text colour.
    std::optional<QColor> toneColor(Tone tone) const;

    // " #0cf1e8\t" → the colour; anything but six hexadecimal digits after an optional "#" →
    // none.
    static std::optional<QColor> colorFromHex(QStringView text);
    static QString hexString(const QColor& color);
    // Dimmed text for canceled and unknown deployments, legible on light and dark surfaces.
    static QColor secondaryTextColor();

Q_SIGNALS:
    void changed();

private:
    void readStored();
    void assign(QColor& slot, const QColor& color);
    void save();

    Preferences& preferences_;
    QString defaultError_;
    QColor success_;
    QColor queued_;
    QColor error_;
};

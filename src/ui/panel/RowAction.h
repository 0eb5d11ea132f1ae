#pragma once

#include <QColor>
#include <QString>
#include <QWidget>
#include <functional>
#include <optional>

class QTimer;

// A small capsule button in a project row: a symbol and a title in the tint (or soft white),
// on a faint fill of the same colour that brightens while hovered.
class RowAction : public QWidget {
    Q_OBJECT
public:
    static constexpr double fillOpacity = 0.12;
    static constexpr double hoverFillOpacity = 0.22;
    static constexpr double outlineOpacity = 0.25;
    static constexpr double hoverDuration = 0.15; // seconds of ease-out

    explicit RowAction(QWidget* parent = nullptr);

    void setTitle(const QString& title);
    QString title() const { return title_; }
    // A symbol name ("doc.on.clipboard", "checkmark", "arrow.up.right"); none draws the title
    // alone.
    void setSymbol(const QString& symbol);
    QString symbol() const { return symbol_; }
    void setTint(std::optional<QColor> tint);
    void setAction(std::function<void()> action) { action_ = std::move(action); }

    bool isHovering() const { return hovering_; }
    void setHovering(bool hovering);
    QColor contentColor() const;
    // The fill's opacity as drawn now, between the resting and the hovered value.
    double currentFillOpacity() const;
    void tick(double seconds);

    // Runs the action, as a click does.
    void trigger();

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QFont titleFont() const;

    QString title_;
    QString symbol_;
    std::optional<QColor> tint_;
    std::function<void()> action_;
    bool hovering_ = false;
    double hover_ = 0; // 0…1, linear; eased when drawn
    QTimer* timer_;
};

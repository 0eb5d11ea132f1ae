#pragma once

#include "core/vercel/ProjectSnapshot.h"
#include "ui/status/TrayEdge.h"

#include <QList>
#include <QObject>

// What the Live Activity capsule shows: up to five rows, how many more projects would qualify,
// and where the beak points. The capsule redraws on every change.
class LiveActivityModel : public QObject {
    Q_OBJECT
public:
    static constexpr double initialBeakX = 190.0;

    using QObject::QObject;

    const QList<ProjectSnapshot>& rows() const { return rows_; }
    int overflow() const { return overflow_; }
    double beakX() const { return beakX_; }
    // The edge of the capsule that faces the tray and carries the beak; `beakX` runs along it.
    TrayEdge beakEdge() const { return beakEdge_; }

    void setRows(QList<ProjectSnapshot> rows, int overflow);
    void setBeakX(double beakX);
    void setBeakEdge(TrayEdge edge);

Q_SIGNALS:
    void changed();

private:
    QList<ProjectSnapshot> rows_;
    int overflow_ = 0;
    double beakX_ = initialBeakX;
    TrayEdge beakEdge_ = TrayEdge::top;
};

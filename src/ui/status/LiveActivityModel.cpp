#include "ui/status/LiveActivityModel.h"

void LiveActivityModel::setRows(QList<ProjectSnapshot> rows, int overflow) {
    rows_ = std::move(rows);
    overflow_ = overflow;
    Q_EMIT changed();
}

void LiveActivityModel::setBeakX(double beakX) {
    if (beakX_ == beakX)
        return;
    beakX_ = beakX;
    Q_EMIT changed();
}

void LiveActivityModel::setBeakEdge(TrayEdge edge) {
    if (beakEdge_ == edge)
        return;
    beakEdge_ = edge;
    Q_EMIT changed();
}

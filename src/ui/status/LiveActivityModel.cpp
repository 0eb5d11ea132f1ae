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

void LiveActivityModel::setBeakDown(bool down) {
    if (beakDown_ == down)
        return;
    beakDown_ = down;
    Q_EMIT changed();
}

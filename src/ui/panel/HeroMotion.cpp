#include "ui/panel/HeroMotion.h"

#include <QRandomGenerator>
#include <QTransform>
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace {

constexpr double pi = std::numbers::pi;
constexpr double turnPeriod = 2.2;
constexpr double breathePeriod = 1.3;
constexpr double idlePeriod = 10;
// The pointer pull is a slightly underdamped spring so the prism overshoots a little.
constexpr double stiffness = 90;
constexpr double damping = 15;
// Per-frame share of the distance covered towards the drifting rest position.
constexpr double driftEase = 0.05;

double length(QPointF v) {
    return std::hypot(v.x(), v.y());
}

// A triangle wave over `period` seconds each way, smoothed at both ends.
double easedBackAndForth(double clock, double period) {
    const double cycle = std::fmod(clock, 2 * period) / period;
    const double t = cycle <= 1 ? cycle : 2 - cycle;
    return t * t * (3 - 2 * t);
}

std::array<QPointF, 162> buildOutline() {
    std::array<QPointF, 162> points;
    for (int i = 0; i <= 80; ++i) {
        const double theta = i * 1.9148873759830622 / 80 - 0.9574436879915311;
        const QPointF point(std::cos(theta) * 96.60975609756098 - 55.609756097560975,
                            std::sin(theta) * 96.60975609756098);
        points[2 * i] = point;
        points[2 * i + 1] = QPointF(-point.x(), point.y());
    }
    return points;
}

} // namespace

HeroMotion::HeroMotion(Random random) : random_(std::move(random)) {}

HeroMotion::Random HeroMotion::systemRandom() {
    return [](double low, double high) {
        return low + QRandomGenerator::global()->generateDouble() * (high - low);
    };
}

std::span<const QPointF> HeroMotion::outline() {
    static const std::array<QPointF, 162> points = buildOutline();
    return points;
}

QPointF HeroMotion::pullOffset(QPointF pointer) {
    const QPointF d = pointer - canvasSize / 2;
    const double r = length(d);
    if (r < 1) {
        // Right at the centre there is no direction to scale; lean up, the way puffs rise.
        const QPointF direction = r > 0 ? d / r : QPointF(0, -1);
        return direction * 0.85;
    }
    const double reach = r > 90 ? 76.5 : 0.85 * r;
    return d / r * reach;
}

QPointF HeroMotion::driftTarget(QPointF anchor, double clock) {
    const double x = anchor.x() - 20 * std::sin(2 * pi * clock / 20);
    const double y = anchor.y() + 16 * std::sin(2 * pi * clock / 27 + 0.9);
    return {std::clamp(x, -34.0, 50.0), std::clamp(y, -26.0, 40.0)};
}

void HeroMotion::setPointer(std::optional<QPointF> pointer) {
    if (pointer) {
        target_ = pullOffset(*pointer);
        drift_ = false;
    } else if (target_) {
        target_.reset();
        anchor_ = pos_; // drift on from wherever the pointer left the prism
        drift_ = true;
    }
}

void HeroMotion::reset() {
    HeroMotion fresh(std::move(random_));
    fresh.tone_ = tone_;
    *this = std::move(fresh);
}

void HeroMotion::tick() {
    clock_ += frame;
    spawnClock_ += frame;
    move();
    advanceTurn();
    maybeSpawn();
    agePuffs();
}

void HeroMotion::move() {
    if (drift_) {
        pos_ += (driftTarget(anchor_, clock_) - pos_) * driftEase;
        velocity_ = {};
        return;
    }
    const QPointF rest = target_.value_or(pos_);
    velocity_ += ((rest - pos_) * stiffness - velocity_ * damping) * frame;
    pos_ += velocity_ * frame;
}

void HeroMotion::advanceTurn() {
    spin_ = tone_ == Tone::building || tone_ == Tone::queued;
    if (spin_) {
        turn_ = std::fmod(turn_ + 2 * pi * frame / turnPeriod, 2 * pi);
        return;
    }
    // Leaving a busy tone, finish the turn the short way rather than snapping upright.
    const double goal = turn_ > pi ? 2 * pi : 0;
    turn_ += (goal - turn_) * 0.12;
    if (std::abs(goal - turn_) < 1e-3)
        turn_ = 0;
}

QPointF HeroMotion::travelDirection() const {
    return velocity_ / std::max(length(velocity_), 1.0);
}

double HeroMotion::breatheLevel() const {
    return easedBackAndForth(clock_, breathePeriod);
}

double HeroMotion::idleLevel() const {
    return easedBackAndForth(clock_, idlePeriod);
}

QPointF HeroMotion::birthPlace(QPointF direction) {
    const auto points = outline();
    const QPointF nearest = *std::min_element(points.begin(), points.end(), [&](auto l, auto r) {
        return length(l - pos_) < length(r - pos_);
    });
    std::array<QPointF, 162> candidates;
    std::size_t count = 0;
    for (const QPointF& point : points) {
        if (length(point - nearest) > 40)
            continue;
        if (QPointF::dotProduct(point / length(point), direction) > 0.35)
            candidates[count++] = point;
    }
    if (count == 0)
        return nearest;
    const auto pick = std::min(count - 1, std::size_t(random_(0, double(count))));
    return candidates[pick];
}

void HeroMotion::maybeSpawn() {
    if (!target_ || spawnClock_ <= 0.16 || puffs_.size() >= maxPuffs)
        return;
    spawnClock_ = 0;
    const QPointF direction = travelDirection();
    const QPointF born = birthPlace(direction);
    QPointF launch(direction.x(), direction.y() - 0.5);
    launch /= std::max(length(launch), 0.001);
    const double angle = random_(-0.2, 0.2);
    launch = QTransform().rotateRadians(angle).map(launch);
    const double speed = random_(150, 260);
    const QPointF jitter(random_(-2, 2), random_(-2, 2));
    Puff puff;
    puff.p = born + jitter;
    puff.v = launch * speed;
    puff.life = random_(0.7, 1.2);
    puff.size = random_(46, 90);
    puff.seed = random_(0, 6.28);
    puff.born = born;
    puffs_.push_back(puff);
}

void HeroMotion::agePuffs() {
    const QPointF direction = travelDirection();
    for (Puff& puff : puffs_) {
        // Puffs trailing the motion live long; those left on the other side fade quickly.
        puff.age += QPointF::dotProduct(direction, puff.born) >= 0.8 ? frame : 1.0 / 15;
        const double sway = 5 * std::sin(1.4 * puff.age + puff.seed);
        puff.p += QPointF(puff.v.x() + sway, puff.v.y()) * frame;
        puff.v = QPointF(puff.v.x() * 0.985, 0.985 * puff.v.y() - 1.0 / 24);
    }
    std::erase_if(puffs_, [](const Puff& puff) { return puff.age >= puff.life; });
}

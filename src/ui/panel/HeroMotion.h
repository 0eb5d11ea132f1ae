#pragma once

#include "core/monitor/ConnectionState.h"

#include <QPointF>
#include <functional>
#include <optional>
#include <span>
#include <vector>

// One soft particle shed by the moving prism.
struct Puff {
    QPointF p; // position, in the prism's frame (outline centred on the origin)
    QPointF v; // points per second
    double age = 0;
    double life = 1;
    double size = 60;
    double seed = 0; // sway phase, radians
    QPointF born;    // the outline point it left from
};

// The header emblem's motion, free of any drawing so it can be stepped and checked: a clock, an
// idle drift or a pull towards the pointer, a steady turn for busy tones and the particles the
// prism sheds while it is being pulled. One call of `tick` is one frame at 60 Hz.
class HeroMotion {
public:
    static constexpr double frame = 1.0 / 60;
    static constexpr QPointF canvasSize{296, 196};
    static constexpr int maxPuffs = 7;

    // Uniform draw from [low, high]; tests hand in a fixed sequence.
    using Random = std::function<double(double low, double high)>;
    explicit HeroMotion(Random random = systemRandom());
    static Random systemRandom();

    // The 162 points of the prism's pointed-oval outline, computed once per process.
    static std::span<const QPointF> outline();
    // Where a pointer at `pointer` (canvas coordinates) pulls the prism, relative to its rest.
    static QPointF pullOffset(QPointF pointer);
    // The wandering rest position around `anchor` at `clock`, kept inside the canvas.
    static QPointF driftTarget(QPointF anchor, double clock);

    void setTone(Tone tone) { tone_ = tone; }
    Tone tone() const { return tone_; }
    // The pointer over the canvas pulls the prism and sheds puffs; without it the prism drifts
    // around where it was left.
    void setPointer(std::optional<QPointF> pointer);

    void tick();
    // Back to the state of a freshly opened panel; the tone and the random source stay.
    void reset();

    double clock() const { return clock_; }
    QPointF pos() const { return pos_; }
    QPointF velocity() const { return velocity_; }
    QPointF anchor() const { return anchor_; }
    std::optional<QPointF> target() const { return target_; }
    bool drift() const { return drift_; }
    bool spin() const { return spin_; }
    double turn() const { return turn_; } // radians
    const std::vector<Puff>& puffs() const { return puffs_; }
    // 0…1, eased back and forth every 1.3 s: the error tone's pulse.
    double breatheLevel() const;
    bool breathe() const { return breatheLevel() >= 0.5; }
    // 0…1, eased back and forth every 10 s: the slow idle motion.
    double idleLevel() const;
    // The unit direction of travel, shorter than 1 for a slow prism (never divided by less).
    QPointF travelDirection() const;

private:
    void move();
    void advanceTurn();
    void maybeSpawn();
    void agePuffs();
    QPointF birthPlace(QPointF direction);

    Random random_;
    Tone tone_ = Tone::idle;
    bool spin_ = false;
    bool drift_ = false;
    std::optional<QPointF> target_;
    QPointF pos_{26, 13};
    QPointF velocity_;
    QPointF anchor_;
    double clock_ = 0;
    double spawnClock_ = 0;
    double turn_ = 0;
    std::vector<Puff> puffs_;
};

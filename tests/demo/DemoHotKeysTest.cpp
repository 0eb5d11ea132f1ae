// The demo's global hot keys on a private X display, pressed with xdotool.
#include "demo/DemoHotKeys.h"
#include "demo/OtherXClient.h"
#include "support/WaitUntil.h"
#include "support/desktop/PrivateDesktop.h"

#include <X11/keysym.h>
#include <gtest/gtest.h>
#include <xcb/xcb.h>

namespace {

// Sets DISPLAY for this process (the hot keys read it) until the end of the scope.
class DisplayVariable {
public:
    explicit DisplayVariable(const QByteArray& value) { set(value); }
    ~DisplayVariable() { set(previous_); }

private:
    static void set(const QByteArray& value) {
        value.isNull() ? qunsetenv("DISPLAY") : qputenv("DISPLAY", value);
    }
    const QByteArray previous_ = qgetenv("DISPLAY");
};

class DemoHotKeysTest : public ::testing::Test {
protected:
    void SetUp() override {
        const std::optional<QString> failure = desktop.startDisplay();
        ASSERT_FALSE(failure) << failure->toStdString();
        display.emplace(desktop.display().toUtf8());
    }

    // Presses each chord in turn, e.g. "ctrl+alt+super+2".
    void press(const QStringList& chords) {
        ASSERT_TRUE(desktop.xdotool(QStringList{"key"} + chords));
    }

    PrivateDesktop desktop;
    std::optional<DisplayVariable> display;
    QList<int> received;
    DemoHotKeys keys{[this](int digit) { received.append(digit); }};
};

} // namespace

TEST_F(DemoHotKeysTest, EachDigitReachesTheHandlerWhateverTheLocks) {
    ASSERT_EQ(keys.registerKeys(), DemoHotKeys::digits());
    const QList<int> all{1, 2, 3, 4, 5, 0};
    // Without Super the chord is not ours: only the six full chords arrive.
    press({"ctrl+alt+super+1", "ctrl+alt+super+2", "ctrl+alt+super+3", "ctrl+alt+3",
           "ctrl+alt+super+4", "ctrl+alt+super+5", "ctrl+alt+super+0"});
    ASSERT_TRUE(waitUntil([&] { return received.size() == 6; })) << received.size();
    EXPECT_EQ(received, all);

    press({"Num_Lock", "Caps_Lock"});
    OtherXClient observer(desktop.display().toUtf8());
    ASSERT_EQ(observer.modifierState() & (XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2),
              XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2)
        << "the locks did not turn on";
    press({"ctrl+alt+super+1", "ctrl+alt+super+2", "ctrl+alt+super+3", "ctrl+alt+super+4",
           "ctrl+alt+super+5", "ctrl+alt+super+0"});
    ASSERT_TRUE(waitUntil([&] { return received.size() == 12; })) << received.size();
    EXPECT_EQ(received.mid(6), all);
}

TEST_F(DemoHotKeysTest, AKeyAnotherProgramOwnsStaysWithItAndTheOthersWork) {
    OtherXClient owner(desktop.display().toUtf8());
    ASSERT_TRUE(owner.grabChord(XK_3));
    EXPECT_EQ(keys.registerKeys(), (QList<int>{1, 2, 4, 5, 0}));
    // The owner gets 3; a 3 reaching us would arrive before the 4.
    press({"ctrl+alt+super+3", "ctrl+alt+super+4"});
    ASSERT_TRUE(waitUntil([&] { return !received.isEmpty(); }));
    EXPECT_EQ(received, QList<int>{4});
}

TEST(DemoHotKeys, WithoutAReachableDisplayNothingIsRegistered) {
    int calls = 0;
    for (const QByteArray& value : {QByteArray(), QByteArray(":7341"), QByteArray("nonsense")}) {
        DisplayVariable display(value);
        DemoHotKeys keys([&](int) { ++calls; });
        EXPECT_TRUE(keys.registerKeys().isEmpty()) << value.toStdString();
        EXPECT_TRUE(keys.registered().isEmpty());
    }
    EXPECT_EQ(calls, 0);
}

#include "demo/DemoHotKeyBinding.h"

#include "core/demo/DemoDirector.h"
#include "core/monitor/AppState.h"

#include <QPointer>

std::unique_ptr<DemoHotKeys> bindDemoHotKeys(AppState& state) {
    if (!state.demo())
        return nullptr;
    auto keys = std::make_unique<DemoHotKeys>([target = QPointer<AppState>(&state)](int digit) {
        if (target && target->demo())
            target->demo()->runScene(digit);
    });
    keys->registerKeys();
    return keys;
}

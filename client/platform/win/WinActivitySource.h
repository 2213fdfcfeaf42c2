#pragma once

#include "platform/ActivitySource.h"

// Activity on Windows: the cursor position and a scan of the state of all 256 virtual keys,
// mouse buttons included, which the system answers for any window.
class WinActivitySource : public ActivitySource {
public:
    QPoint CursorPos() override;
    bool AnyKeyActive() override;
};

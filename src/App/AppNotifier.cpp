#include "App/AppNotifier.h"

AppNotifier &AppNotifier::shared()
{
    static auto *notifier = new AppNotifier;
    return *notifier;
}

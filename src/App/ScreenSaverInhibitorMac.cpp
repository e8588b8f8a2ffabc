#include "App/ScreenSaverInhibitor.h"

#include <IOKit/pwr_mgt/IOPMLib.h>

#include <optional>

// The power assertion is a local call that answers at once.
struct ScreenSaverInhibitor::Hold
{
    std::optional<IOPMAssertionID> assertion;
};

ScreenSaverInhibitor::ScreenSaverInhibitor(const QString &reason, QObject *parent)
    : QObject(parent), m_reason(reason), m_hold(std::make_unique<Hold>())
{}

ScreenSaverInhibitor::~ScreenSaverInhibitor()
{
    release();
}

void ScreenSaverInhibitor::settle()
{
    if (m_wanted && !m_hold->assertion)
        acquire();
    else if (!m_wanted && m_hold->assertion)
        release();
}

void ScreenSaverInhibitor::acquire()
{
    const CFStringRef reason = m_reason.toCFString();
    IOPMAssertionID assertion = kIOPMNullAssertionID;
    if (IOPMAssertionCreateWithName(kIOPMAssertionTypePreventUserIdleDisplaySleep,
                                    kIOPMAssertionLevelOn, reason, &assertion) == kIOReturnSuccess)
        m_hold->assertion = assertion;
    CFRelease(reason);
}

void ScreenSaverInhibitor::release()
{
    if (m_hold->assertion)
        IOPMAssertionRelease(*m_hold->assertion);
    m_hold->assertion.reset();
}

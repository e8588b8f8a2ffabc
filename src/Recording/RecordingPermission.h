#pragma once

// The system's permission to record the screen and its sound, where one exists.
class RecordingPermission
{
public:
    virtual ~RecordingPermission() = default;

    // False where recording needs no permission: its refusals and its texts never apply there.
    virtual bool exists() const = 0;
    // Whether recording is allowed now, without asking.
    virtual bool preflight() = 0;
    // Asks the user where the system can; whether recording is allowed afterwards.
    virtual bool request() = 0;
};

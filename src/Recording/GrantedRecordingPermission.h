#pragma once

#include "Recording/RecordingPermission.h"

// Systems where an application may draw its own window into a file and read the sound server's
// monitor without asking anyone: always granted.
class GrantedRecordingPermission : public RecordingPermission
{
public:
    bool exists() const override { return false; }
    bool preflight() override { return true; }
    bool request() override { return true; }
};

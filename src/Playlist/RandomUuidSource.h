#pragma once

#include <QRandomGenerator64>
#include <QUuid>

// Random (version 4) UUIDs in bulk. A fresh QUuid::createUuid() asks the operating system for
// entropy each time; a playlist of a million channels needs a million ids, so this source seeds a
// generator from the system once and draws from it. Not thread-safe: one per parse.
class RandomUuidSource
{
public:
    RandomUuidSource();

    QUuid next();

private:
    QRandomGenerator64 m_generator;
};

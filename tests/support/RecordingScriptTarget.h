#pragma once

#include "Web/WebScriptTarget.h"

#include <QObject>
#include <QStringList>

// Stands in for a web player view where only the scripts sent to it matter; the real views are
// tested against a real browser engine with the web players.
class RecordingScriptTarget : public QObject, public WebScriptTarget
{
public:
    void runScript(const QString &script) override { scripts.append(script); }
    QStringList scripts;
};

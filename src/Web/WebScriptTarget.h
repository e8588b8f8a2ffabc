#pragma once

#include <QString>

// What a web player view offers the registries: running one script in its page. The view is a
// QObject that also implements this interface, so a registry can hold it weakly (QPointer) and
// still reach the script engine.
class WebScriptTarget
{
public:
    virtual ~WebScriptTarget() = default;
    // Runs the script in the page; the result and any script error are ignored.
    virtual void runScript(const QString &script) = 0;
};

#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QTest>

// Runs a program to completion and keeps what it said, for black-box tests of our executables.
struct ProcessResult
{
    bool finished = false; // false when it crashed or outlived the time limit
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

inline ProcessResult
runProcess(const QString &program, const QStringList &arguments, const QByteArray &input = {},
           const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment(),
           int timeoutMs = 60000)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    ProcessResult result;
    if (!process.waitForStarted(timeoutMs))
        return result;
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
    }
    result.finished = process.exitStatus() == QProcess::NormalExit;
    result.exitCode = process.exitCode();
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

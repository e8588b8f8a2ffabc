#pragma once

#include "App/RecordingControl.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QObject>
#include <QString>

#include <functional>

class ContentView;
class LocalM3UActions;
class PlayerModel;
class PlayerRecordingController;
class QWidget;
struct PlaylistEntry;

// The commands of the control socket, each a name and its arguments as in
// {"command": ["skip", 5]}. Every command answers exactly once through its reply: an empty error
// for success, with data, or a message. Commands that start something longer (opening a remote
// address, importing a playlist) answer when it has ended.
class ControlCommands : public QObject
{
    Q_OBJECT

public:
    using Reply = std::function<void(const QString &error, const QJsonValue &data)>;

    ControlCommands(PlayerModel &model, LocalM3UActions &localM3U, ContentView &content,
                    PlayerRecordingController &recorder, QWidget &window,
                    QObject *parent = nullptr);

    void run(const QJsonArray &command, const Reply &reply);

private:
    using Handler =
        std::function<void(ControlCommands &, const QJsonArray &arguments, const Reply &reply)>;

    void getProperty(const QJsonArray &arguments, const Reply &reply);
    void setProperty(const QJsonArray &arguments, const Reply &reply);
    void filteredCount(const QJsonArray &arguments, const Reply &reply);
    void screenshot(const QJsonArray &arguments, const Reply &reply);
    // The channel of the published playlist that the one argument counts to; otherwise the
    // error is replied and nothing is returned.
    const PlaylistEntry *playlistArgument(const QJsonArray &arguments, const Reply &reply);
    void playlistEntry(const QJsonArray &arguments, const Reply &reply);
    // The programme on now, or next, on the channel the one argument counts to; null without one.
    void guideProgramme(const QJsonArray &arguments, const Reply &reply, bool next);
    void play(const QJsonArray &arguments, const Reply &reply);
    void openRemote(const QJsonArray &arguments, const Reply &reply);
    void modelAction(void (PlayerModel::*action)(), const QJsonArray &arguments,
                     const Reply &reply);
    void modelAction(void (PlayerModel::*action)(double), const QJsonArray &arguments,
                     const Reply &reply);
    void setVolume(const QJsonArray &arguments, const Reply &reply);
    void localEntries(const QJsonArray &arguments, const Reply &reply);
    void saveToLocalM3U(const QJsonArray &arguments, const Reply &reply);
    void importLocalM3U(const QJsonArray &arguments, const Reply &reply);
    void exportLocalM3U(const QJsonArray &arguments, const Reply &reply);
    void restoreLocalM3U(const QJsonArray &arguments, const Reply &reply);
    // Replies once the saved links as they are now are written, or with why they were not.
    void replyWhenSaved(const Reply &reply, const QJsonValue &data);
    void key(const QJsonArray &arguments, const Reply &reply);
    void quit(const QJsonArray &arguments, const Reply &reply);

    PlayerModel &m_model;
    LocalM3UActions &m_localM3U;
    ContentView &m_content;
    RecordingControl m_recording;
    QWidget &m_window;
};

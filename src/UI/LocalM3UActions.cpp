#include "UI/LocalM3UActions.h"

#include "Player/PlayerModel.h"
#include "Player/PlayerTiming.h"
#include "Playlist/M3UExport.h"
#include "Playlist/PlaylistTexts.h"
#include "UI/LocalM3UPrompts.h"

#include <QDate>
#include <QFileInfo>

LocalM3UActions::LocalM3UActions(PlayerModel &model, LocalM3UStore &store, QObject *parent)
    : QObject(parent), m_model(model), m_store(store)
{
    connect(&m_store, &LocalM3UStore::saveFailed, this, [this](const QString &description) {
        if (m_prompts)
            m_prompts->showSaveFailure(description);
    });
}

void LocalM3UActions::saveToLocalM3U(const PlaylistEntry &entry)
{
    m_store.saveOrMoveToFront(
        {entry.name, entry.url, entry.logoURL, entry.countryCode, entry.groupTitle});
    // Confirmed once it is on disk, never before; a failure is told by the store's alert. The
    // name as the row showed it: untrimmed, and empty when the channel has none.
    m_store.whenSaved(this, [this, name = entry.name](const LocalM3UStore::SaveOutcome &outcome) {
        if (!outcome)
            m_model.showToast(PlaylistTexts::savedToLocalM3U.toString() + name,
                              PlayerTiming::toastNanoseconds);
    });
}

void LocalM3UActions::addLink(const LocalLinkFields &fields)
{
    m_store.saveOrMoveToFront(fields);
}

void LocalM3UActions::editLink(const QUuid &id, const LocalLinkFields &fields)
{
    m_store.updateInPlace(id, fields);
}

void LocalM3UActions::deleteLink(const QUuid &id)
{
    m_store.remove(id);
}

void LocalM3UActions::deleteAll()
{
    m_store.removeAll();
}

QFuture<bool> LocalM3UActions::importLocalPlaylist(const std::optional<QString> &displayName)
{
    return replaceWhenImported(m_model.importLocalM3U(displayName));
}

QFuture<bool> LocalM3UActions::importLocalPlaylistFile(const QString &path,
                                                       const std::optional<QString> &displayName)
{
    return replaceWhenImported(m_model.importLocalM3UFile(path, displayName));
}

QFuture<bool> LocalM3UActions::replaceWhenImported(PlayerModel::PlaylistImport import)
{
    return import.then(this, [this](const std::optional<QList<PlaylistEntry>> &entries) {
        if (entries)
            replaceSavedLinks(*entries);
        return entries.has_value();
    });
}

void LocalM3UActions::adoptPublishedPlaylist(const QList<PlaylistEntry> &entries)
{
    if (!entries.isEmpty())
        replaceSavedLinks(entries);
}

void LocalM3UActions::replaceSavedLinks(const QList<PlaylistEntry> &entries)
{
    const bool hadLinks = !m_store.entries().isEmpty();
    m_store.replaceAll(entries);
    // The links that were there are kept; the panel offers them back.
    if (hadLinks)
        m_model.showToast(PlaylistTexts::replacedByChannels.toString().arg(entries.size()),
                          PlayerTiming::toastNanoseconds);
}

void LocalM3UActions::restorePreviousLinks()
{
    m_store.restorePrevious();
}

void LocalM3UActions::exportLocalPlaylistAsM3U()
{
    if (m_store.entries().isEmpty() || !m_prompts)
        return;
    const std::optional<QString> path = m_prompts->chooseExportFile(defaultExportM3UFilename());
    if (!path)
        return;
    if (const std::optional<QString> failure = exportLocalPlaylist(*path))
        m_prompts->showExportFailure(*failure);
}

std::optional<QString> LocalM3UActions::exportLocalPlaylist(const QString &path)
{
    if (m_store.entries().isEmpty())
        return std::nullopt;
    if (std::optional<QString> failure = M3UExport::write(path, m_store.entries()))
        return failure;
    m_model.showToast(PlaylistTexts::exported.toString() + QStringLiteral(": ") +
                          QFileInfo(path).fileName(),
                      PlayerTiming::toastNanoseconds);
    return std::nullopt;
}

QString LocalM3UActions::defaultExportM3UFilename()
{
    return M3UExport::defaultFileName(QDate::currentDate());
}

#pragma once

#include <QString>
#include <QtGlobal>

// How a programme guide may know a channel of a playlist: its tvg-id and tvg-name attributes as
// written (empty when absent). Kept beside the channels rather than in them, so that saved links
// and exports stay as they are.
struct ChannelGuideKey
{
    QString tvgID;
    QString tvgName;

    friend bool operator==(const ChannelGuideKey &, const ChannelGuideKey &) = default;
};

Q_DECLARE_TYPEINFO(ChannelGuideKey, Q_RELOCATABLE_TYPE);

#include "Recording/RecordingFileName.h"

#include "Recording/RecordingTexts.h"

#include <QLocale>

QString recordingTimestamp(const QDateTime &at)
{
    return QLocale::c().toString(at.toLocalTime(), RecordingTexts::timestampPattern);
}

QString proposedRecordingName(PlayerRecordingQuality quality, const QDateTime &at)
{
    const QStringView word =
        quality == PlayerRecordingQuality::hd ? RecordingTexts::hdWord : RecordingTexts::normalWord;
    QString name = RecordingTexts::namePrefix.toString();
    name += word;
    name += RecordingTexts::nameMiddle;
    name += recordingTimestamp(at);
    name += u'.';
    name += RecordingTexts::mp4Suffix;
    return name;
}

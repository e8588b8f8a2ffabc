#include "Playlist/GuideReader.h"

#include "Playlist/XmltvTime.h"

#include <QIODevice>
#include <QSet>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

// Cancellation is looked at every this many elements.
constexpr int cancelCheckInterval = 4096;
constexpr qint64 unknownStop = -1;

QString folded(const QString &text)
{
    return text.trimmed().toCaseFolded();
}

// Times are short and plain ASCII: read from a buffer on the stack, not a fresh allocation.
std::optional<qint64> parseTime(QStringView text)
{
    char ascii[40];
    if (text.size() > qsizetype(sizeof ascii))
        return std::nullopt;
    for (qsizetype i = 0; i < text.size(); ++i)
        ascii[i] = text[i].unicode() < 128 ? char(text[i].unicode()) : '?';
    return XmltvTime::parse(QByteArrayView(ascii, text.size()));
}

QString capped(QString text, qsizetype length)
{
    text = text.trimmed();
    if (text.size() > length)
        text = text.left(length - 1).trimmed() + QChar(0x2026);
    return text;
}

} // namespace

// One pass over one guide.
class GuideReader::Run
{
public:
    Run(const GuideReader &reader, QIODevice &device) : m_reader(reader), m_xml(&device)
    {
        m_result.programmes.resize(reader.m_channelCount);
    }

    Result read(const std::atomic_bool *cancelled)
    {
        int untilCheck = cancelCheckInterval;
        while (!m_xml.atEnd()) {
            if (m_xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (--untilCheck == 0) {
                untilCheck = cancelCheckInterval;
                if (cancelled && cancelled->load())
                    return finish(QStringLiteral("cancelled"));
            }
            if (m_xml.name() == u"channel")
                readChannel();
            else if (m_xml.name() == u"programme")
                readProgramme();
        }
        return finish(m_xml.hasError() ? m_xml.errorString() : QString());
    }

private:
    void readChannel()
    {
        const QString id = folded(m_xml.attributes().value(QLatin1StringView("id")).toString());
        QStringList names;
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == u"display-name")
                names.append(folded(m_xml.readElementText()));
            else
                m_xml.skipCurrentElement();
        }
        if (!id.isEmpty())
            m_declared.append({id, names});
    }

    // Channels are declared before programmes; the first programme settles who is whom.
    void settleChannels()
    {
        m_settled = true;
        QSet<int> byID;
        for (const Declared &channel : std::as_const(m_declared)) {
            const QList<int> keys = m_reader.m_byID.value(channel.id);
            m_keys[channel.id] = keys;
            for (int key : keys)
                byID.insert(key);
        }
        m_matched = byID;
        for (const Declared &channel : std::as_const(m_declared)) {
            QList<int> &keys = m_keys[channel.id];
            for (const QString &name : channel.names) {
                for (int key : m_reader.m_byName.value(name)) {
                    if (!byID.contains(key) && !keys.contains(key)) {
                        keys.append(key);
                        m_matched.insert(key);
                    }
                }
            }
        }
        m_declared.clear();
    }

    const QList<int> &keysOf(const QString &guideID)
    {
        if (!m_settled)
            settleChannels();
        auto found = m_keys.constFind(guideID);
        if (found == m_keys.cend()) {
            // A programme of a channel the guide did not declare: for the list's channels of that
            // id that no declared channel took.
            QList<int> keys = m_reader.m_byID.value(guideID);
            keys.removeIf([this](int key) { return m_matched.contains(key); });
            found = m_keys.insert(guideID, keys);
        }
        return *found;
    }

    // A guide lists each channel's programmes together: the channel looked up last is most
    // likely the next one's too.
    const QList<int> &keysOfChannel(QStringView written)
    {
        if (written != m_lastChannel) {
            m_lastChannel = written.toString();
            m_lastKeys = keysOf(folded(m_lastChannel));
        }
        return m_lastKeys;
    }

    void readProgramme()
    {
        std::optional<qint64> start;
        std::optional<qint64> stop;
        {
            // Let go of the attributes before the reader moves on: while they are shared, its
            // next element would copy them, once for each of a guide's programmes.
            const QXmlStreamAttributes attributes = m_xml.attributes();
            keysOfChannel(attributes.value(QLatin1StringView("channel")));
            start = parseTime(attributes.value(QLatin1StringView("start")));
            const QStringView stopText = attributes.value(QLatin1StringView("stop"));
            stop = stopText.isEmpty() ? std::optional(unknownStop) : parseTime(stopText);
        }
        const QList<int> &keys = m_lastKeys;
        // Unknown channels, programmes out of the window and wrong times are passed over.
        if (keys.isEmpty() || !start || !stop || *start >= m_reader.m_windowEnd ||
            (*stop != unknownStop && (*stop <= *start || *stop <= m_reader.m_windowStart))) {
            m_xml.skipCurrentElement();
            return;
        }
        GuideProgramme programme{*start, *stop, {}, {}, {}, {}};
        while (m_xml.readNextStartElement()) {
            const QStringView name = m_xml.name();
            if (name == u"title" && programme.title.isEmpty())
                programme.title = capped(m_xml.readElementText(), maxTitleLength);
            else if (name == u"sub-title" && programme.subTitle.isEmpty())
                programme.subTitle = capped(m_xml.readElementText(), maxTitleLength);
            else if (name == u"desc" && programme.description.isEmpty())
                programme.description = capped(m_xml.readElementText(), maxDescriptionLength);
            else if (name == u"category" && programme.category.isEmpty())
                programme.category = capped(m_xml.readElementText(), maxTitleLength);
            else
                m_xml.skipCurrentElement();
        }
        for (qsizetype i = 0; i < keys.size(); ++i) {
            QList<GuideProgramme> &list = m_result.programmes[keys[i]];
            if (i + 1 == keys.size())
                list.append(std::move(programme));
            else
                list.append(programme);
        }
    }

    // In order of start; a programme without a stop ends where the next one starts, and one that
    // then still ends before the window (or has no next) is dropped.
    Result finish(const QString &error)
    {
        m_result.complete = error.isEmpty();
        m_result.error = error;
        for (QList<GuideProgramme> &programmes : m_result.programmes) {
            // Guides list a channel's programmes in order as a rule; sorting is for the others.
            const auto byStart = [](const auto &a, const auto &b) { return a.start < b.start; };
            if (!std::is_sorted(programmes.cbegin(), programmes.cend(), byStart))
                std::stable_sort(programmes.begin(), programmes.end(), byStart);
            for (qsizetype i = 0; i < programmes.size(); ++i) {
                if (programmes[i].stop == unknownStop)
                    programmes[i].stop =
                        i + 1 < programmes.size() ? programmes[i + 1].start : unknownStop;
            }
            programmes.removeIf([this](const GuideProgramme &programme) {
                return programme.stop <= programme.start ||
                       programme.stop <= m_reader.m_windowStart;
            });
        }
        return std::move(m_result);
    }

    struct Declared
    {
        QString id;
        QStringList names;
    };

    const GuideReader &m_reader;
    QXmlStreamReader m_xml;
    Result m_result;
    QList<Declared> m_declared;
    QString m_lastChannel;
    QList<int> m_lastKeys;
    bool m_settled = false;
    QHash<QString, QList<int>> m_keys; // the list's channels of each guide channel
    QSet<int> m_matched;               // the list's channels a declared guide channel took
};

GuideReader::GuideReader(const QList<Channel> &channels, qint64 windowStart, qint64 windowEnd)
    : m_channelCount(channels.size()), m_windowStart(windowStart), m_windowEnd(windowEnd)
{
    for (int i = 0; i < channels.size(); ++i) {
        const Channel &channel = channels[i];
        if (const QString id = folded(channel.tvgID); !id.isEmpty())
            m_byID[id].append(i);
        for (const QString &name : {channel.tvgName, channel.name}) {
            QList<int> &keys = m_byName[folded(name)];
            if (!name.trimmed().isEmpty() && !keys.contains(i))
                keys.append(i);
        }
    }
    m_byName.remove(QString());
}

GuideReader::Result GuideReader::read(QIODevice &device, const std::atomic_bool *cancelled)
{
    return Run(*this, device).read(cancelled);
}

#include "Playlist/GuideReader.h"

#include "Playlist/XmltvTime.h"

#include <QIODevice>
#include <QSet>
#include <QStringDecoder>

#include <algorithm>
#include <cstring>
#include <limits>

#include <expat.h>

namespace {

// Read and parsed a block at a time; cancellation is looked at between blocks.
constexpr qint64 blockSize = 256 * 1024;
// The start of a guide searched for its XML declaration.
constexpr qint64 declarationSize = 1024;
constexpr qint64 unknownStop = -1;
// No time a guide can write comes near the smallest number.
constexpr qint64 wrongTime = std::numeric_limits<qint64>::min();
// A text is gathered up to this many bytes for each character kept: no UTF-8 character takes more
// than three bytes for one UTF-16 unit. Anything beyond is cut in any case.
constexpr qsizetype bytesPerUnit = 3;
// Display names are never cut, but one longer than this names no channel of a list.
constexpr qsizetype maxNameBytes = 4096;

QString folded(const QString &text)
{
    return text.trimmed().toCaseFolded();
}

// The text trimmed and cut to length (an ellipsis in place of the rest); cut: the text gathered
// was already shortened, so that it is longer than length in any case.
QString capped(const QByteArray &utf8, qsizetype length, bool cut)
{
    QString text = QString::fromUtf8(utf8).trimmed();
    if (cut || text.size() > length)
        text = text.left(length - 1).trimmed() + QChar(0x2026);
    return text;
}

bool isXmlSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The encoding an XML declaration at the head names, or nothing. Only an ASCII-compatible head is
// looked at: a byte order mark or UTF-16 are told by the parser itself.
QByteArray declaredEncoding(QByteArrayView head)
{
    if (head.startsWith("\xEF\xBB\xBF"))
        head = head.sliced(3);
    if (!head.startsWith("<?xml"))
        return {};
    if (const qsizetype close = head.indexOf("?>"); close >= 0)
        head = head.first(close);
    const qsizetype at = head.indexOf("encoding");
    if (at < 0)
        return {};
    qsizetype i = at + qsizetype(std::strlen("encoding"));
    while (i < head.size() && (isXmlSpace(head[i]) || head[i] == '='))
        ++i;
    if (i >= head.size() || (head[i] != '"' && head[i] != '\''))
        return {};
    const qsizetype end = head.indexOf(head[i], i + 1);
    return end < 0 ? QByteArray() : head.sliced(i + 1, end - i - 1).toByteArray();
}

// Encodings the parser reads itself; any other is turned into UTF-8 before it.
bool parserReads(const QByteArray &encoding)
{
    for (const char *known : {"", "utf-8", "us-ascii", "iso-8859-1", "utf-16"}) {
        if (encoding.compare(known, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

// Whether the head is UTF-16: a byte order mark, or the NUL bytes of ASCII characters.
bool isUtf16(QByteArrayView head)
{
    return head.startsWith("\xFE\xFF") || head.startsWith("\xFF\xFE") ||
           head.first(std::min<qsizetype>(head.size(), 4)).contains('\0');
}

// Where the last whole UTF-8 sequence of bytes ends (not before from); continuations: how many
// bytes of a sequence cut there the next block starts with.
qsizetype wholeSequencesEnd(QByteArrayView bytes, qsizetype from, qsizetype &continuations)
{
    continuations = 0;
    for (qsizetype back = 1; back <= 3 && bytes.size() - back >= from; ++back) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
        if ((byte & 0xC0) == 0x80)
            continue;
        const qsizetype length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        if (length > back) {
            continuations = length - back;
            return bytes.size() - back;
        }
        break;
    }
    return bytes.size();
}

bool named(const XML_Char *name, const char *wanted)
{
    return std::strcmp(name, wanted) == 0;
}

} // namespace

// One pass over one guide, fed to expat a block at a time. Expat's callbacks keep a small state:
// whether a channel or a programme is open and which of its texts is being gathered.
class GuideReader::Run
{
public:
    explicit Run(const GuideReader &reader) : m_reader(reader)
    {
        m_result.programmes.resize(reader.m_channelCount);
    }

    ~Run()
    {
        if (m_parser)
            XML_ParserFree(m_parser);
    }

    Result read(QIODevice &device, const std::atomic_bool *cancelled)
    {
        const QByteArray head = device.peek(declarationSize);
        const QByteArray encoding = declaredEncoding(head);
        const bool utf8 = !isUtf16(head) && (encoding.isEmpty() ||
                                             encoding.compare("utf-8", Qt::CaseInsensitive) == 0);
        std::optional<QStringDecoder> decoder;
        if (!parserReads(encoding)) {
            decoder.emplace(encoding.constData());
            if (!decoder->isValid())
                return finish(QStringLiteral("the guide's encoding %1 is not known")
                                  .arg(QString::fromLatin1(encoding)));
        }
        // Told UTF-8 up front, the parser reads what the decoder turned into UTF-8 whatever the
        // declaration says.
        m_parser = XML_ParserCreate(decoder ? "UTF-8" : nullptr);
        if (!m_parser)
            return finish(QStringLiteral("out of memory"));
        XML_SetUserData(m_parser, this);
        XML_SetElementHandler(m_parser, &Run::started, &Run::ended);
        XML_SetCharacterDataHandler(m_parser, &Run::gathered);
        for (;;) {
            if (cancelled && cancelled->load())
                return finish(QStringLiteral("cancelled"));
            const bool parsed = decoder ? parseDecoded(device, *decoder) : parseBlock(device, utf8);
            if (!parsed)
                return finish(
                    QStringLiteral("%1 (line %2)")
                        .arg(QString::fromUtf8(XML_ErrorString(XML_GetErrorCode(m_parser))))
                        .arg(XML_GetCurrentLineNumber(m_parser)));
            if (m_ended)
                return finish({});
        }
    }

private:
    enum class Item
    {
        none,
        channel,
        programme,
        skipped
    };
    // A text of a channel or a programme that is kept: a programme's goes to member, cut at length;
    // a channel's (no member) is one of its display names.
    struct Field
    {
        const char *element;
        QString GuideProgramme::*member;
        qsizetype length;
    };
    static constexpr Field displayName{"display-name", nullptr, 0};
    static constexpr Field programmeFields[] = {
        {"title", &GuideProgramme::title, maxTitleLength},
        {"sub-title", &GuideProgramme::subTitle, maxTitleLength},
        {"desc", &GuideProgramme::description, maxDescriptionLength},
        {"category", &GuideProgramme::category, maxTitleLength},
    };

    // Reads into the parser's own buffer, so the bytes are not copied on the way. With mend, UTF-8
    // as it should be goes to the parser as read, and a block with faulty bytes, as guides written
    // by hand or joined from others now and then have, goes with each fault made U+FFFD: the parser
    // would stop at the first one and lose the rest of the guide.
    bool parseBlock(QIODevice &device, bool mend)
    {
        auto *buffer = static_cast<char *>(XML_GetBuffer(m_parser, int(blockSize)));
        if (!buffer)
            return false;
        const qint64 read = device.read(buffer, blockSize);
        m_ended = read <= 0;
        const QByteArrayView bytes(buffer, qsizetype(std::max<qint64>(read, 0)));
        if (!mend)
            return XML_ParseBuffer(m_parser, int(bytes.size()), m_ended) != XML_STATUS_ERROR;
        // A sequence cut between blocks is whole again in the parser; it is checked in neither.
        const qsizetype start = std::min(m_continuations, bytes.size());
        const qsizetype end =
            m_ended ? bytes.size() : wholeSequencesEnd(bytes, start, m_continuations);
        const QByteArrayView checked = bytes.sliced(start, end - start);
        if (checked.isValidUtf8())
            return XML_ParseBuffer(m_parser, int(bytes.size()), m_ended) != XML_STATUS_ERROR;
        const QByteArray mended = bytes.first(start).toByteArray() +
                                  QString::fromUtf8(checked).toUtf8() +
                                  bytes.sliced(end).toByteArray();
        return XML_Parse(m_parser, mended.constData(), int(mended.size()), m_ended) !=
               XML_STATUS_ERROR;
    }

    bool parseDecoded(QIODevice &device, QStringDecoder &decoder)
    {
        const QByteArray block = device.read(blockSize);
        m_ended = block.isEmpty();
        const QString decoded = decoder(block);
        const QByteArray utf8 = decoded.toUtf8();
        return XML_Parse(m_parser, utf8.constData(), int(utf8.size()), m_ended) != XML_STATUS_ERROR;
    }

    static void XMLCALL started(void *self, const XML_Char *name, const XML_Char **attributes)
    {
        static_cast<Run *>(self)->start(name, attributes);
    }

    static void XMLCALL ended(void *self, const XML_Char *) { static_cast<Run *>(self)->end(); }

    static void XMLCALL gathered(void *self, const XML_Char *text, int length)
    {
        static_cast<Run *>(self)->gather(text, length);
    }

    void start(const XML_Char *name, const XML_Char **attributes)
    {
        ++m_depth;
        if (m_item == Item::none) {
            if (named(name, "channel"))
                openChannel(attributes);
            else if (named(name, "programme"))
                openProgramme(attributes);
        } else if (m_depth == m_itemDepth + 1 && !m_field) {
            openField(name);
        }
    }

    void end()
    {
        if (m_field && m_depth == m_itemDepth + 1)
            closeField();
        else if (m_item != Item::none && m_depth == m_itemDepth)
            closeItem();
        --m_depth;
    }

    // The text of a field and of anything inside it, up to what can be kept.
    void gather(const XML_Char *text, int length)
    {
        if (!m_field)
            return;
        // Leading blanks are trimmed in any case; dropping them here keeps them out of the limit.
        if (m_text.isEmpty()) {
            while (length > 0 && isXmlSpace(*text)) {
                ++text;
                --length;
            }
        }
        const qsizetype room = m_textLimit - m_text.size();
        if (length > room)
            m_textCut = true;
        m_text.append(text, std::min<qsizetype>(length, room));
    }

    static const XML_Char *attribute(const XML_Char **attributes, const char *name)
    {
        for (; attributes[0]; attributes += 2) {
            if (named(attributes[0], name))
                return attributes[1];
        }
        return nullptr;
    }

    void openChannel(const XML_Char **attributes)
    {
        m_item = Item::channel;
        m_itemDepth = m_depth;
        const XML_Char *id = attribute(attributes, "id");
        m_declaring = {folded(QString::fromUtf8(id ? id : "")), {}};
    }

    void openProgramme(const XML_Char **attributes)
    {
        m_itemDepth = m_depth;
        const XML_Char *channel = attribute(attributes, "channel");
        const XML_Char *startText = attribute(attributes, "start");
        const XML_Char *stopText = attribute(attributes, "stop");
        keysOfChannel(channel ? channel : "");
        const qint64 start =
            startText ? XmltvTime::parse(startText).value_or(wrongTime) : wrongTime;
        const qint64 stop =
            !stopText || !*stopText ? unknownStop : XmltvTime::parse(stopText).value_or(wrongTime);
        // Unknown channels, programmes out of the window and wrong times are passed over.
        if (m_lastKeys.isEmpty() || start == wrongTime || stop == wrongTime ||
            start >= m_reader.m_windowEnd ||
            (stop != unknownStop && (stop <= start || stop <= m_reader.m_windowStart))) {
            m_item = Item::skipped;
            return;
        }
        m_item = Item::programme;
        m_programme = GuideProgramme{start, stop, {}, {}, {}, {}};
    }

    void openField(const XML_Char *name)
    {
        if (m_item == Item::channel) {
            if (named(name, displayName.element))
                openField(displayName);
        } else if (m_item == Item::programme) {
            // The first of each kind counts.
            for (const Field &field : programmeFields) {
                if (named(name, field.element) && (m_programme.*field.member).isEmpty()) {
                    openField(field);
                    return;
                }
            }
        }
    }

    void openField(const Field &field)
    {
        m_field = &field;
        m_textLimit = field.member ? field.length * bytesPerUnit : maxNameBytes;
        m_textCut = false;
        m_text.clear();
    }

    void closeField()
    {
        if (m_field->member)
            m_programme.*m_field->member = capped(m_text, m_field->length, m_textCut);
        else if (!m_textCut)
            m_declaring.names.append(folded(QString::fromUtf8(m_text)));
        m_field = nullptr;
    }

    void closeItem()
    {
        if (m_item == Item::channel && !m_declaring.id.isEmpty())
            m_declared.append(std::move(m_declaring));
        else if (m_item == Item::programme)
            keepProgramme();
        m_item = Item::none;
    }

    void keepProgramme()
    {
        const QList<int> &keys = m_lastKeys;
        for (qsizetype i = 0; i < keys.size(); ++i) {
            QList<GuideProgramme> &list = m_result.programmes[keys[i]];
            if (i + 1 == keys.size())
                list.append(std::move(m_programme));
            else
                list.append(m_programme);
        }
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
    void keysOfChannel(const char *written)
    {
        if (m_lastChannel != written) {
            m_lastChannel = written;
            m_lastKeys = keysOf(folded(QString::fromUtf8(m_lastChannel)));
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
    XML_Parser m_parser = nullptr;
    bool m_ended = false;
    qsizetype m_continuations = 0; // of a UTF-8 sequence the last block cut
    Result m_result;

    int m_depth = 0;
    Item m_item = Item::none;
    int m_itemDepth = 0;
    const Field *m_field = nullptr; // the text being gathered
    QByteArray m_text;
    qsizetype m_textLimit = 0;
    bool m_textCut = false;
    Declared m_declaring;
    GuideProgramme m_programme;

    QList<Declared> m_declared;
    QByteArray m_lastChannel;
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

GuideReader::Result GuideReader::read(QIODevice &device, const std::atomic_bool *cancelled) const
{
    return Run(*this).read(device, cancelled);
}

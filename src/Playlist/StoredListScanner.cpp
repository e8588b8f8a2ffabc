#include "Playlist/StoredListScanner.h"

#include <QString>
#include <QStringDecoder>

#include <string>
#include <string_view>
#include <unordered_map>

namespace {

enum class Field
{
    Id,
    Name,
    Url,
    LogoUrl,
    GroupTitle,
    CountryCode,
    Unknown
};
constexpr int fieldCount = int(Field::Unknown);

Field fieldNamed(QByteArrayView key)
{
    static constexpr std::pair<const char *, Field> fields[] = {
        {"id", Field::Id},
        {"name", Field::Name},
        {"url", Field::Url},
        {"logoURL", Field::LogoUrl},
        {"groupTitle", Field::GroupTitle},
        {"countryCode", Field::CountryCode}};
    for (const auto &[name, field] : fields) {
        if (key == QByteArrayView(name))
            return field;
    }
    return Field::Unknown;
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// The canonical 8-4-4-4-12 hexadecimal text, either letter case.
bool isCanonicalUuid(QByteArrayView text)
{
    if (text.size() != 36)
        return false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? text[i] != '-' : hexValue(text[i]) < 0)
            return false;
    }
    return true;
}

void appendUtf8(std::string &out, char32_t c)
{
    if (c < 0x80) {
        out += char(c);
    } else if (c < 0x800) {
        out += char(0xC0 | (c >> 6));
        out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += char(0xE0 | (c >> 12));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    } else {
        out += char(0xF0 | (c >> 18));
        out += char(0x80 | ((c >> 12) & 0x3F));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
}

// The text of UTF-8 bytes, a leading U+FEFF kept: QString::fromUtf8 would drop it as a byte-order
// mark, and a name may begin with it.
QString textOf(QByteArrayView bytes)
{
    static constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");
    if (!bytes.startsWith(byteOrderMark))
        return QString::fromUtf8(bytes);
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::ConvertInitialBom |
                                                       QStringConverter::Flag::Stateless);
    return decoder(bytes);
}

// Equal groups and countries, met thousands of times in a long list, become one shared string,
// looked up by their bytes so that a repeat costs no conversion.
class BytePool
{
public:
    QString intern(QByteArrayView bytes)
    {
        const std::string_view key(bytes.data(), size_t(bytes.size()));
        if (const auto found = m_strings.find(key); found != m_strings.end())
            return found->second;
        return m_strings.emplace(std::string(key), textOf(bytes)).first->second;
    }

private:
    struct Hash
    {
        using is_transparent = void;
        size_t operator()(std::string_view text) const
        {
            return std::hash<std::string_view>{}(text);
        }
    };
    std::unordered_map<std::string, QString, Hash, std::equal_to<>> m_strings;
};

class Scanner
{
public:
    Scanner(QByteArrayView json, const StoredListScanner::Progress &progress)
        : m_begin(json.data()), m_at(json.data()), m_end(json.data() + json.size()),
          m_progress(progress)
    {}

    std::optional<QList<PlaylistEntry>> list()
    {
        QList<PlaylistEntry> entries;
        entries.reserve(recordCountAtMost());
        skipSpace();
        if (!take('['))
            return std::nullopt;
        skipSpace();
        if (!take(']')) {
            do {
                skipSpace();
                std::optional<PlaylistEntry> entry = record();
                if (!entry)
                    return std::nullopt;
                entries.append(std::move(*entry));
                reportProgress();
                skipSpace();
            } while (take(','));
            if (!take(']'))
                return std::nullopt;
        }
        skipSpace();
        if (m_at != m_end)
            return std::nullopt;
        return entries;
    }

private:
    // Every record opens with "{", and a brace inside a name is rare: sized by them, the list
    // never grows by copies and holds hardly more than it needs.
    qsizetype recordCountAtMost() const { return QByteArrayView(m_at, m_end).count('{'); }

    void reportProgress()
    {
        static constexpr qsizetype step = 16 << 20;
        if (m_progress && m_at - m_begin >= m_reported + step) {
            m_reported = m_at - m_begin;
            m_progress(m_reported);
        }
    }

    void skipSpace()
    {
        while (m_at != m_end && (*m_at == ' ' || *m_at == '\n' || *m_at == '\r' || *m_at == '\t'))
            ++m_at;
    }

    bool take(char c)
    {
        if (m_at == m_end || *m_at != c)
            return false;
        ++m_at;
        return true;
    }

    std::optional<PlaylistEntry> record()
    {
        if (!take('{'))
            return std::nullopt;
        std::optional<QByteArrayView> values[fieldCount];
        skipSpace();
        if (!take('}')) {
            do {
                skipSpace();
                const std::optional<QByteArrayView> key = rawKey();
                skipSpace();
                if (!key || !take(':'))
                    return std::nullopt;
                const Field field = fieldNamed(*key);
                skipSpace();
                if (field == Field::Unknown || values[int(field)])
                    return std::nullopt;
                values[int(field)] = string(m_unescaped[int(field)]);
                if (!values[int(field)])
                    return std::nullopt;
                skipSpace();
            } while (take(','));
            if (!take('}'))
                return std::nullopt;
        }
        return entryOf(values);
    }

    // A key is one of a few plain ASCII names: one written with escapes is no key of ours.
    std::optional<QByteArrayView> rawKey()
    {
        if (!take('"'))
            return std::nullopt;
        const char *start = m_at;
        while (m_at != m_end && *m_at != '"' && *m_at != '\\')
            ++m_at;
        if (m_at == m_end || *m_at != '"')
            return std::nullopt;
        return QByteArrayView(start, m_at++ - start);
    }

    // The run of bytes up to the next quote, escape or control character, checked to be UTF-8;
    // runs end at ASCII bytes, so valid runs make valid text.
    std::optional<QByteArrayView> plainRun()
    {
        const char *start = m_at;
        while (m_at != m_end && *m_at != '"' && *m_at != '\\' && uchar(*m_at) >= 0x20)
            ++m_at;
        const QByteArrayView run(start, m_at - start);
        if (m_at == m_end || !run.isValidUtf8())
            return std::nullopt;
        return run;
    }

    // The string's UTF-8 bytes: a view of the input when it holds no escape, else of buffer.
    std::optional<QByteArrayView> string(std::string &buffer)
    {
        if (!take('"'))
            return std::nullopt;
        std::optional<QByteArrayView> run = plainRun();
        if (run && take('"'))
            return run;
        buffer.clear();
        while (run) {
            buffer.append(run->data(), size_t(run->size()));
            if (take('"'))
                return QByteArrayView(buffer.data(), qsizetype(buffer.size()));
            if (!take('\\') || !escape(buffer))
                return std::nullopt;
            run = plainRun();
        }
        return std::nullopt;
    }

    bool escape(std::string &buffer)
    {
        if (m_at == m_end)
            return false;
        switch (const char c = *m_at++) {
        case '"':
        case '\\':
        case '/':
            buffer += c;
            return true;
        case 'b':
            buffer += '\b';
            return true;
        case 'f':
            buffer += '\f';
            return true;
        case 'n':
            buffer += '\n';
            return true;
        case 'r':
            buffer += '\r';
            return true;
        case 't':
            buffer += '\t';
            return true;
        case 'u':
            return unicodeEscape(buffer);
        default:
            return false;
        }
    }

    std::optional<char16_t> hexUnit()
    {
        if (m_end - m_at < 4)
            return std::nullopt;
        int unit = 0;
        for (int i = 0; i < 4; ++i) {
            const int digit = hexValue(m_at[i]);
            if (digit < 0)
                return std::nullopt;
            unit = unit * 16 + digit;
        }
        m_at += 4;
        return char16_t(unit);
    }

    // Surrogates only as a high and low pair; readers disagree about a lone half.
    bool unicodeEscape(std::string &buffer)
    {
        const std::optional<char16_t> unit = hexUnit();
        if (!unit)
            return false;
        if (!QChar::isSurrogate(*unit)) {
            appendUtf8(buffer, *unit);
            return true;
        }
        if (!QChar::isHighSurrogate(*unit) || m_end - m_at < 2 || m_at[0] != '\\' || m_at[1] != 'u')
            return false;
        m_at += 2;
        const std::optional<char16_t> low = hexUnit();
        if (!low || !QChar::isLowSurrogate(*low))
            return false;
        appendUtf8(buffer, QChar::surrogateToUcs4(*unit, *low));
        return true;
    }

    std::optional<PlaylistEntry> entryOf(const std::optional<QByteArrayView> (&values)[fieldCount])
    {
        const std::optional<QByteArrayView> &id = values[int(Field::Id)];
        const std::optional<QByteArrayView> &name = values[int(Field::Name)];
        const std::optional<QByteArrayView> &url = values[int(Field::Url)];
        const std::optional<QByteArrayView> &logo = values[int(Field::LogoUrl)];
        if (!id || !isCanonicalUuid(*id) || !name || !url)
            return std::nullopt;
        PlaylistEntry entry{QUuid::fromString(QLatin1StringView(*id)),
                            textOf(*name),
                            {},
                            std::nullopt,
                            std::nullopt,
                            std::nullopt};
        std::optional<WebAddress> address = WebAddress::fromAscii(*url);
        if (!address)
            return std::nullopt;
        entry.url = std::move(*address);
        if (logo && !(entry.logoURL = WebAddress::fromAscii(*logo)))
            return std::nullopt;
        if (const std::optional<QByteArrayView> &group = values[int(Field::GroupTitle)])
            entry.groupTitle = m_pool.intern(*group);
        if (const std::optional<QByteArrayView> &country = values[int(Field::CountryCode)])
            entry.countryCode = m_pool.intern(*country);
        return entry;
    }

    const char *m_begin;
    const char *m_at;
    const char *m_end;
    const StoredListScanner::Progress &m_progress;
    qsizetype m_reported = 0;
    // The decoded bytes of each field's escaped string, reused from record to record.
    std::string m_unescaped[fieldCount];
    BytePool m_pool;
};

} // namespace

std::optional<QList<PlaylistEntry>> StoredListScanner::scan(QByteArrayView json,
                                                            const Progress &progress)
{
    return Scanner(json, progress).list();
}

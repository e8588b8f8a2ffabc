#include "Playlist/PlaylistParserRun.h"

#include "Base/MemoryPrefault.h"
#include "Playlist/PlaylistParser.h"

namespace {

constexpr QByteArrayView descriptionPrefix("#EXTINF:");

// The title rule: the text after the first comma when there is any, else the text before it.
QByteArrayView title(QByteArrayView description, const EncodedText &text)
{
    const qsizetype comma = description.indexOf(',');
    if (comma < 0)
        return text.trimmed(description);
    const QByteArrayView after = description.sliced(comma + 1);
    return text.trimmed(after.isEmpty() ? description.first(comma) : after);
}

} // namespace

PlaylistParserRun::PlaylistParserRun(const WebAddress &base, PlaylistTextDecoder::Encoding encoding,
                                     qsizetype capacity, Options options)
    : m_base(base), m_text(encoding), m_options(options),
      m_guideKeys(encoding, options.keepGuideKeys ? capacity : 0)
{
    m_entries.reserve(capacity);
    // Tens of megabytes for a large list: mapped in one step rather than a page fault at a time.
    MemoryPrefault::prepareReservedRoom(m_entries);
}

PlaylistParserRun::PlaylistParserRun(const WebAddress &base, PlaylistTextDecoder::Encoding encoding,
                                     qsizetype capacity)
    : PlaylistParserRun(base, encoding, capacity, Options{})
{}

void PlaylistParserRun::readBlock(QByteArrayView block)
{
    m_text.forEachLine(block, [this](QByteArrayView line) { readLine(line); });
    if (m_description) {
        // Copied first: the description may already live in the held bytes.
        QByteArray held = m_description->toByteArray();
        m_heldDescription = std::move(held);
        m_description = QByteArrayView(m_heldDescription);
    }
}

void PlaylistParserRun::append(PlaylistParserRun &&later)
{
    m_entries.append(std::move(later.m_entries));
    m_guideKeys.append(std::move(later.m_guideKeys));
    m_heldDescription = std::move(later.m_heldDescription);
    m_description =
        later.m_description ? std::optional(QByteArrayView(m_heldDescription)) : std::nullopt;
}

void PlaylistParserRun::readLine(QByteArrayView line)
{
    // The title keeps trailing white space until it is split off, so a description ending in ", "
    // has an empty title rather than the whole line as title.
    const QByteArrayView description = m_text.leftTrimmed(line);
    if (description.isEmpty())
        return;
    if (description.startsWith(descriptionPrefix)) {
        m_description = description;
        return;
    }
    if (description.startsWith('#'))
        return;
    if (const auto address = WebAddress::fromAscii(m_text.trimmed(description), m_base))
        addEntry(*address);
}

void PlaylistParserRun::addEntry(const WebAddress &address)
{
    const PlaylistParser::Attributes attributes =
        m_description ? PlaylistParser::attributes(*m_description, m_text)
                      : PlaylistParser::Attributes{};
    PlaylistEntry entry{
        m_uuids.next(), entryName(address, attributes.tvgName), address, {}, {}, {}};
    if (attributes.tvgLogo) {
        entry.logoURL = WebAddress::fromAscii(*attributes.tvgLogo);
        if (m_options.webLogosOnly && entry.logoURL && !entry.logoURL->isWebAddress())
            entry.logoURL.reset();
    }
    if (const auto group = attributes.groupTitle)
        entry.groupTitle =
            m_groups.intern(*group, [this, group] { return m_text.toString(*group); });
    // A present but unusable tvg-country falls back to the channel id, never to "country".
    entry.countryCode = PlaylistParser::normalizedCountryCode(
        attributes.tvgCountry ? attributes.tvgCountry : attributes.country, m_text, m_countries);
    if (!entry.countryCode)
        entry.countryCode =
            PlaylistParser::inferredCountryCode(attributes.tvgID, m_text, m_countries);
    m_entries.append(std::move(entry));
    if (m_options.keepGuideKeys)
        m_guideKeys.append(attributes.tvgID, attributes.tvgName);
    m_description.reset();
}

QString PlaylistParserRun::entryName(const WebAddress &address,
                                     std::optional<QByteArrayView> tvgName) const
{
    if (m_description) {
        const QByteArrayView titleText = title(*m_description, m_text);
        if (!titleText.isEmpty())
            return m_text.toString(titleText);
        if (tvgName)
            return m_text.toString(*tvgName);
    }
    if (auto last = address.lastPathComponent(); last && !last->isEmpty())
        return *std::move(last);
    if (auto host = address.host())
        return *std::move(host);
    return QStringLiteral("Stream");
}

#include "Playlist/GuideAddresses.h"

#include <algorithm>
#include <utility>

namespace {

constexpr QByteArrayView header = "#EXTM3U";
constexpr QByteArrayView attributeNames[] = {"x-tvg-url=\"", "url-tvg=\""};

// The header line, without a leading byte-order mark or blank lines; empty when there is none.
QByteArrayView headerLine(QByteArrayView bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes = bytes.sliced(3);
    qsizetype start = 0;
    while (start < bytes.size() && QChar::isSpace(uchar(bytes[start])))
        ++start;
    qsizetype end = start;
    while (end < bytes.size() && bytes[end] != '\n' && bytes[end] != '\r')
        ++end;
    const QByteArrayView line = bytes.sliced(start, end - start);
    return line.startsWith(header) ? line : QByteArrayView();
}

// Every quoted value of the two attributes in line, in the order written; the names are matched
// without regard to case and must stand on their own, not end a longer name.
QList<QByteArrayView> attributeValues(QByteArrayView line)
{
    QList<std::pair<qsizetype, QByteArrayView>> found;
    const QByteArray lower = line.toByteArray().toLower();
    for (QByteArrayView name : attributeNames) {
        for (qsizetype at = lower.indexOf(name); at >= 0; at = lower.indexOf(name, at + 1)) {
            if (at > 0 && lower[at - 1] != ' ' && lower[at - 1] != '\t')
                continue;
            const qsizetype from = at + name.size();
            const qsizetype to = lower.indexOf('"', from);
            if (to < 0)
                break;
            found.append({at, line.sliced(from, to - from)});
        }
    }
    std::sort(found.begin(), found.end(),
              [](const auto &a, const auto &b) { return a.first < b.first; });
    QList<QByteArrayView> values;
    for (const auto &[at, value] : found)
        values.append(value);
    return values;
}

} // namespace

QList<WebAddress> GuideAddresses::fromPlaylist(QByteArrayView bytes, const WebAddress &base)
{
    const QByteArrayView line = headerLine(bytes);
    QList<WebAddress> addresses;
    for (QByteArrayView value : attributeValues(line)) {
        for (const QByteArray &part : value.toByteArray().split(',')) {
            const QString text = QString::fromUtf8(part).trimmed();
            if (text.isEmpty())
                continue;
            const std::optional<WebAddress> address = WebAddress::fromText(text, base);
            if (address && !addresses.contains(*address))
                addresses.append(*address);
        }
    }
    return addresses;
}

#pragma once

#include <QHash>
#include <QSet>
#include <QString>

// Counts the distinct texts it is given. A playlist's channels share one string per group and
// per country, so a string whose very data was counted before is known without hashing its
// text again; it is kept, so that its data cannot be freed and reused for another text.
class DistinctTexts
{
public:
    void add(const QString &text)
    {
        if (m_counted.contains(text.constData()))
            return;
        m_counted.insert(text.constData(), text);
        m_texts.insert(text);
    }
    qsizetype count() const { return m_texts.size(); }

private:
    QHash<const QChar *, QString> m_counted;
    QSet<QString> m_texts;
};

#include "Base/BackgroundRelease.h"

#include <QTest>
#include <QThread>

#include <atomic>
#include <memory>

namespace {

// Every element of a list shares one sentinel, which notes the thread it dies on: the thread
// that freed the last element of the list.
struct Sentinel
{
    std::shared_ptr<std::atomic<QThread *>> freedOn;
    ~Sentinel() { freedOn->store(QThread::currentThread()); }
};

struct Element
{
    std::shared_ptr<Sentinel> sentinel;
};

} // namespace

class tst_BackgroundRelease : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void freesLongListsOffTheCallingThread_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<bool>("shared");    // another copy of the list is kept meanwhile
        QTest::addColumn<bool>("elsewhere"); // freed on another thread, else here and at once
        QTest::newRow("a long list held alone") << 100'000 << false << true;
        QTest::newRow("a short list") << 10 << false << false;
        QTest::newRow("a long list someone shares") << 100'000 << true << false;
    }

    void freesLongListsOffTheCallingThread()
    {
        QFETCH(int, length);
        QFETCH(bool, shared);
        QFETCH(bool, elsewhere);
        auto freedOn = std::make_shared<std::atomic<QThread *>>(nullptr);
        QList<Element> list;
        {
            auto sentinel = std::make_shared<Sentinel>();
            sentinel->freedOn = freedOn;
            list = QList<Element>(length, Element{sentinel});
        }
        QList<Element> copy = shared ? list : QList<Element>();

        releaseInBackground(std::move(list));
        QVERIFY(list.isEmpty());
        if (shared) {
            // Only a reference went: the other holder's list is whole, and frees it here.
            QCOMPARE(copy.size(), length);
            QCOMPARE(freedOn->load(), nullptr);
            copy = {};
        }
        if (elsewhere)
            QTRY_VERIFY(freedOn->load() != nullptr);
        QVERIFY(freedOn->load() != nullptr);
        QCOMPARE(freedOn->load() == QThread::currentThread(), !elsewhere);
    }

    void freesSharedObjectsHeldAloneOffTheCallingThread_data()
    {
        QTest::addColumn<bool>("shared");
        QTest::newRow("held alone") << false;
        QTest::newRow("someone shares it") << true;
    }

    void freesSharedObjectsHeldAloneOffTheCallingThread()
    {
        QFETCH(bool, shared);
        auto freedOn = std::make_shared<std::atomic<QThread *>>(nullptr);
        auto object = std::make_shared<Sentinel>();
        object->freedOn = freedOn;
        std::shared_ptr<Sentinel> copy = shared ? object : nullptr;

        releaseInBackground(std::move(object));
        QVERIFY(!object);
        if (shared) {
            QCOMPARE(freedOn->load(), nullptr);
            copy.reset();
            QCOMPARE(freedOn->load(), QThread::currentThread());
        } else {
            QTRY_VERIFY(freedOn->load() != nullptr);
            QVERIFY(freedOn->load() != QThread::currentThread());
        }
    }
};

QTEST_GUILESS_MAIN(tst_BackgroundRelease)
#include "tst_BackgroundRelease.moc"

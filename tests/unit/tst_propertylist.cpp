#include "platform/PropertyList.h"
#include "support/PlistFixtures.h"

#include <QDateTime>
#include <QTest>

class TestPropertyList : public QObject
{
    Q_OBJECT
private slots:
    void readsWhatItWrites_data();
    void readsWhatItWrites();
    void rejectsWhatIsNotAPropertyList_data();
    void rejectsWhatIsNotAPropertyList();
};

namespace {
QVariantMap sample()
{
    return {{QStringLiteral("flag"), true},
            {QStringLiteral("count"), qint64(-42)},
            {QStringLiteral("big"), qint64(1) << 40},
            {QStringLiteral("ratio"), 1.5},
            {QStringLiteral("name"), QStringLiteral("Zoë's \"profile\" <1>")},
            {QStringLiteral("bytes"), QByteArray("\x00\x01\xff", 3)},
            {QStringLiteral("when"), QDateTime(QDate(2019, 5, 17), QTime(8, 30, 15), Qt::UTC)},
            {QStringLiteral("list"), QVariantList{qint64(1), QStringLiteral("two"), QVariantMap()}},
            {QStringLiteral("nested"), QVariantMap{{QStringLiteral("Safari:cookies"), true}}}};
}
} // namespace

void TestPropertyList::readsWhatItWrites_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("XML") << PropertyList::toXml(sample()).value_or(QByteArray());
    QTest::newRow("binary") << PlistFixtures::binary(sample());
}

void TestPropertyList::readsWhatItWrites()
{
    QFETCH(QByteArray, bytes);
    const auto value = PropertyList::parse(bytes);
    QVERIFY(value);
    QCOMPARE(value->toMap(), sample());
}

void TestPropertyList::rejectsWhatIsNotAPropertyList_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("garbage") << QByteArray("not a plist <<");
    QTest::newRow("truncated XML") << PropertyList::toXml(sample()).value_or(QByteArray()).left(200);
    QTest::newRow("truncated binary") << PlistFixtures::binary(sample()).left(40);
    QTest::newRow("JSON") << QByteArray("{\"a\": 1}");
}

void TestPropertyList::rejectsWhatIsNotAPropertyList()
{
    QFETCH(QByteArray, bytes);
    const auto value = PropertyList::parse(bytes);
    QVERIFY(!value || value->typeId() != QMetaType::QVariantMap);
}

QTEST_GUILESS_MAIN(TestPropertyList)
#include "tst_propertylist.moc"

#include "service/focus_credential_store.h"

#include <QTest>

#include <utility>
#include <vector>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

class OneSecret : public SecretStore {
public:
    std::optional<QByteArray> read(const QString& service, const QString& account) override
    {
        asked.emplace_back(service, account);
        return secret;
    }

    std::optional<QByteArray> secret;
    std::vector<std::pair<QString, QString>> asked;
};

} // namespace

class TestFocusCredentialStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theKeyIsReadFromItsOwnItem()
    {
        OneSecret secrets;
        secrets.secret = "key";
        QCOMPARE(FocusCredentialStore(secrets).readAPIKey(), std::optional(u"key"_s));
        QCOMPARE(secrets.asked, (std::vector<std::pair<QString, QString>> { { u"com.orvanta.focus"_s, u"orvanta-api-key"_s } }));
    }

    void withoutAnItemThereIsNoKey()
    {
        OneSecret secrets;
        QVERIFY(!FocusCredentialStore(secrets).readAPIKey().has_value());
    }

    void validTextComesBackAsItIs_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("key");
        QTest::newRow("empty") << QByteArray("") << QString();
        QTest::newRow("line break at the end") << QByteArray("key\n") << u"key\n"_s;
        QTest::newRow("white space around") << QByteArray(" \tkey \r\n") << u" \tkey \r\n"_s;
        QTest::newRow("NUL inside") << QByteArray("a\0b", 3) << QString::fromLatin1("a\0b", 3);
        QTest::newRow("two bytes") << QByteArray("\xc3\xa9") << u"\u00e9"_s;
        QTest::newRow("four bytes") << QByteArray("\xf0\x9f\x94\x91") << u"\U0001f511"_s;
        QTest::newRow("last code point") << QByteArray("\xf4\x8f\xbf\xbf") << u"\U0010ffff"_s;
        QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbfkey") << u"\ufeffkey"_s;
    }

    void validTextComesBackAsItIs()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const QString, key);
        OneSecret secrets;
        secrets.secret = bytes;
        QCOMPARE(FocusCredentialStore(secrets).readAPIKey(), std::optional(key));
    }

    void invalidUtf8IsNoKey_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("stray continuation") << QByteArray("key\x80");
        QTest::newRow("cut off after two of three") << QByteArray("key\xe2\x82");
        QTest::newRow("lead byte alone") << QByteArray("\xc3");
        QTest::newRow("lead byte before ASCII") << QByteArray("\xc3(");
        QTest::newRow("overlong slash, two bytes") << QByteArray("\xc0\xaf");
        QTest::newRow("overlong slash, three bytes") << QByteArray("\xe0\x80\xaf");
        QTest::newRow("overlong, four bytes") << QByteArray("\xf0\x82\x82\xac");
        QTest::newRow("high surrogate") << QByteArray("\xed\xa0\x80");
        QTest::newRow("surrogate pair") << QByteArray("\xed\xa0\xbd\xed\xb4\x91");
        QTest::newRow("beyond the last code point") << QByteArray("\xf4\x90\x80\x80");
        QTest::newRow("bytes that never occur") << QByteArray("\xfe\xff");
        QTest::newRow("Latin-1") << QByteArray("cl\xe9");
    }

    void invalidUtf8IsNoKey()
    {
        QFETCH(const QByteArray, bytes);
        OneSecret secrets;
        secrets.secret = bytes;
        QVERIFY(!FocusCredentialStore(secrets).readAPIKey().has_value());
    }
};

QTEST_GUILESS_MAIN(TestFocusCredentialStore)
#include "test_focus_credential_store.moc"

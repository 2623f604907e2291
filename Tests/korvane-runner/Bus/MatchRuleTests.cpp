#include "korvane-runner/Bus/MatchRule.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace korvane::test;

namespace {

TranslatedRule translated(const std::string& text) {
    InstanceNames names{PrivateNames("k_One"), NamePolicy(Secrets::shared)};
    return translatedRule(text, names);
}

using KeysAndValues = std::vector<std::pair<std::string, std::string>>;

std::optional<KeysAndValues> partsOf(const std::string& text) {
    const auto rule = MatchRule::parse(text);
    if (!rule) return std::nullopt;
    KeysAndValues parts;
    for (const auto& part : rule->parts) parts.emplace_back(part.key, part.value);
    return parts;
}

} // namespace

TEST_CASE("rules are read as the bus reads them") {
    const std::vector<std::pair<std::string, KeysAndValues>> table{
        {"", {}},
        {"  \t\r\n", {}},
        {"type='signal'", {{"type", "signal"}}},
        {"type=signal", {{"type", "signal"}}},
        {"type='signal',", {{"type", "signal"}}},
        {"type='signal', ", {{"type", "signal"}}},
        {"  type='signal'", {{"type", "signal"}}},
        {"type \t='signal'", {{"type", "signal"}}},
        {"type= 'signal'", {{"type", " signal"}}},
        {"type='signal' ,member='X'", {{"type", "signal "}, {"member", "X"}}},
        {"type='signal',\r\n\t member=X", {{"type", "signal"}, {"member", "X"}}},
        {"type='signal'x", {{"type", "signalx"}}},
        {"type='signal' x", {{"type", "signal x"}}},
        {"type\v='signal'", {{"type\v", "signal"}}},
        {",type='signal'", {{",type", "signal"}}},
        {"arg0=a\\'b", {{"arg0", "a'b"}}},
        {"arg0='a'b'c'", {{"arg0", "abc"}}},
        {"arg0='it'\\''s'", {{"arg0", "it's"}}},
        {"arg0='a\\'", {{"arg0", "a\\"}}},
        {"arg0=a\\b", {{"arg0", "a\\b"}}},
        {"arg0=\\\\", {{"arg0", "\\\\"}}},
        {"arg0=\\", {{"arg0", "\\"}}},
        {"arg0=\\\\'x'", {{"arg0", "\\\\x"}}},
        {"arg0=a\\,b", {{"arg0", "a\\,b"}}},
        {"arg0='a'\\,'b'", {{"arg0", "a\\,b"}}},
        {"arg0=a\\\\,member=X", {{"arg0", "a\\\\"}, {"member", "X"}}},
        {"arg0='a\\',member=X", {{"arg0", "a\\"}, {"member", "X"}}},
        {"arg0='a,b'", {{"arg0", "a,b"}}},
        {"arg0=x y ", {{"arg0", "x y "}}},
        {"arg0=a=b", {{"arg0", "a=b"}}},
        {"arg0=", {{"arg0", ""}}},
        {"unknown='x',arg63path='/'", {{"unknown", "x"}, {"arg63path", "/"}}},
        {"=", {}},
        {" = ", {}},
        {"='x',type='foo'", {}},
        {"type='signal',=,type='foo'", {{"type", "signal"}}},
    };
    for (const auto& row : table) {
        const auto& text = row.first;
        const auto& parts = row.second;
        CAPTURE(text);
        CHECK((partsOf(text) == parts));
    }
}

TEST_CASE("what the bus takes for no rule is none, and is left as it is") {
    for (const std::string text :
         {"type", "arg0", "arg0='a", "arg0=\\\\'a", "arg0=a,b", "arg 0='x'", "sender='org.a.b',x",
          "sender='org.a.b',member='X"}) {
        CAPTURE(text);
        CHECK_FALSE(partsOf(text));
        CHECK(translated(text) == TranslatedRule{text});
    }
}

TEST_CASE("senders and destinations are called as on the bus") {
    const std::vector<std::pair<std::string, std::string>> table{
        {"sender='org.a.b'", "sender='k_One.org.a.b'"},
        {"sender=org.a.b", "sender='k_One.org.a.b'"},
        {"sender=org.'a'.b", "sender='k_One.org.a.b'"},
        {" sender ='org.a.b',", " sender ='k_One.org.a.b',"},
        {"eavesdrop=true,sender='org.no.x'", "eavesdrop=true,sender='k_One.org.no.x'"},
        {"destination='org.a.b',sender='org.a.c'",
         "destination='k_One.org.a.b',sender='k_One.org.a.c'"},
        {"sender='org.a.b',path='/a',=,sender='org.c.d'",
         "sender='k_One.org.a.b',path='/a',=,sender='org.c.d'"},
        {"sender='org.mpris.MediaPlayer2.vlc'", "sender='org.mpris.MediaPlayer2.vlc.k_One'"},
        {"sender='org.a.b',unknown='org.a.b'", "sender='k_One.org.a.b',unknown='org.a.b'"},
    };
    for (const auto& row : table) {
        const auto& text = row.first;
        const auto& rule = row.second;
        CAPTURE(text);
        CHECK(translated(text) == TranslatedRule{rule});
    }
}

TEST_CASE("rules without a private name stay as they are, byte by byte") {
    for (const std::string text :
         {"", "type='signal'", " type=signal , member=X", "sender=':1.5'",
          "sender=org.freedesktop.DBus", "sender='org.freedesktop.Notifications'", "sender='none'",
          "sender=''", "interface='org.a.b'", "path='/org/a/b'", "path_namespace='/org'",
          "sender='org.freedesktop.DBus',arg0='org.freedesktop.Notifications'",
          "sender='org.freedesktop.DBus',arg0='no name'",
          "sender='org.freedesktop.DBus',arg0=':1.5'",
          "sender='org.freedesktop.DBus',arg1='org.a.b'",
          "sender='org.freedesktop.DBus',arg0path='org.a.b'",
          "sender='org.freedesktop.DBus',arg01='org.a.b'", "member='NameOwnerChanged',arg2=''"}) {
        CAPTURE(text);
        CHECK(translated(text) == TranslatedRule{text});
    }
}

TEST_CASE("the first argument is a name in what the bus says, and anything elsewhere") {
    for (const std::string about :
         {"member='NameOwnerChanged'", "member='NameAcquired'", "member='NameLost'",
          "sender='org.freedesktop.DBus'", "interface='org.freedesktop.DBus'"}) {
        for (const std::string key : {"arg0", "arg00", "arg0x0", "arg+0"}) {
            CAPTURE(about);
            CAPTURE(key);
            CHECK(translated(about + "," + key + "='org.a.b'") ==
                  TranslatedRule{about + "," + key + "='k_One.org.a.b'"});
            CHECK(translated(key + "='org.a.b'," + about) ==
                  TranslatedRule{key + "='k_One.org.a.b'," + about});
        }
    }
    for (const std::string about : {"member='PropertiesChanged'",
                                    "interface='org.freedesktop.DBus.Properties'", "path='/'"}) {
        CAPTURE(about);
        CHECK(translated(about + ",arg0='org.a.b'") == TranslatedRule{about + ",arg0='org.a.b'"});
        CHECK(translated(about + ",arg0namespace='org.a'") ==
              TranslatedRule{about + ",arg0namespace='org.a'"});
    }
}

TEST_CASE("a program hears of the name that it owns, and of the one that it would call") {
    const std::string name = "arg0='org.freedesktop.Notifications'";
    const std::string own = "arg0='k_One.org.freedesktop.Notifications'";

    CHECK(translated("member='NameAcquired'," + name).rule == "member='NameAcquired'," + own);
    CHECK(translated("member='NameLost'," + name).rule == "member='NameLost'," + own);
    CHECK(translated("member='NameOwnerChanged'," + name).rule ==
          "member='NameOwnerChanged'," + name);
}

TEST_CASE("a name space takes two rules") {
    const std::string begin = "type='signal',sender='org.freedesktop.DBus',arg0namespace=";

    CHECK(translated(begin + "'org.gnome'") ==
          TranslatedRule{begin + "'org.gnome'", begin + "'k_One.org.gnome'"});
    CHECK(translated(begin + "org,path=/") ==
          TranslatedRule{begin + "org,path=/", begin + "'k_One.org',path=/"});
    CHECK(translated("destination='a.b',member=NameOwnerChanged,arg0namespace='org'") ==
          TranslatedRule{
              "destination='k_One.a.b',member=NameOwnerChanged,arg0namespace='org'",
              "destination='k_One.a.b',member=NameOwnerChanged,arg0namespace='k_One.org'"});
    CHECK(translated(begin + "'org.'") == TranslatedRule{begin + "'org.'"});
}

TEST_CASE("what gdbus watches becomes what the bus tells of") {
    const std::string watched =
        "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',member='"
        "NameOwnerChanged',path='/org/freedesktop/DBus',arg0='";

    CHECK(translated(watched + "org.no.x'") == TranslatedRule{watched + "k_One.org.no.x'"});
}

TEST_CASE("a rule becomes the same every time, or it could not be removed") {
    InstanceNames names{PrivateNames("k_One"), NamePolicy(Secrets::shared)};
    const auto longName = "a." + std::string(250, 'b');
    for (const auto& text : {std::string("sender='org.a.b'"), "sender='" + longName + "'"}) {
        const auto first = translatedRule(text, names);
        translatedRule("sender='org.other.name'", names);
        CHECK(translatedRule(text, names) == first);
    }
}

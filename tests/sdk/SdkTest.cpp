#include "CBaseEvent.h"
#include "CUiComponent.h"
#include "CWidgetBuilder.h"
#include "QVArrayList.h"
#include "QVProfile.h"

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QPushButton>

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(SdkWidgetBuilder, PresetPathReplacesFromTheLastDot)
{
    struct Case
    {
        const char* form;
        const char* preset;
    };
    const Case cases[] = {
        {":/plugin/MVGoZBrush/MVGoZPlugin.ui", ":/plugin/MVGoZBrush/MVGoZPlugin.preset"},
        {"a.b.ui", "a.b.preset"},
        {"noextension", "noextension"},
        {"dir.x/file", "dir.preset"},
        {"trailing.", "trailing.preset"},
    };
    for (const Case& c : cases) {
        CWidgetBuilder builder;
        builder.SetFormPath(QString::fromLatin1(c.form));
        EXPECT_EQ(builder.GetPresetPath().toStdString(), c.preset) << c.form;
        EXPECT_EQ(builder.GetFormPath().toStdString(), c.form);
    }
}

class CTwoNames : public CUiComponent
{
public:
    QV::Result SetupUi(QWidget* root) override
    {
        ClearMissing();
        window = Find<QMainWindow>(root, "window");
        button = Find<QPushButton>(root, "button");
        label = Find<QLabel>(root, "label");
        action = Find<QAction>(root, "action");
        return MissingResult();
    }
    QMainWindow* window = nullptr;
    QPushButton* button = nullptr;
    QLabel* label = nullptr;
    QAction* action = nullptr;
};

TEST(SdkUiComponent, FindsRootChildrenAndRecordsWhatIsMissing)
{
    QMainWindow window;
    window.setObjectName(QStringLiteral("window"));
    auto* central = new QWidget(&window);
    window.setCentralWidget(central);
    auto* button = new QPushButton(central);
    button->setObjectName(QStringLiteral("button"));
    auto* wrongType = new QPushButton(central);
    wrongType->setObjectName(QStringLiteral("label")); // a label of the wrong class is missing
    auto* action = new QAction(&window);
    action->setObjectName(QStringLiteral("action"));

    CTwoNames ui;
    EXPECT_EQ(ui.SetupUi(&window), QV::kFail);
    EXPECT_EQ(ui.window, &window);
    EXPECT_EQ(ui.button, button);
    EXPECT_EQ(ui.action, action);
    EXPECT_EQ(ui.label, nullptr);
    EXPECT_EQ(ui.MissingNames(), QStringList{QStringLiteral("label")});

    delete wrongType;
    auto* label = new QLabel(central);
    label->setObjectName(QStringLiteral("label"));
    EXPECT_EQ(ui.SetupUi(&window), QV::kOk);
    EXPECT_TRUE(ui.MissingNames().isEmpty());
    EXPECT_EQ(ui.SetupUi(nullptr), QV::kFail);
    EXPECT_EQ(ui.MissingNames().size(), 4);
}

class CDerivedEditEvent : public CEditBlendShapeEvent
{
public:
    QByteArray TypeName() const override { return TypeChain().first(); }

protected:
    const QList<QByteArray>& TypeChain() const override
    {
        static const QList<QByteArray>& chain = RegisterChain(
            {QByteArrayLiteral("CDerivedEditEvent"), QByteArrayLiteral("CEditBlendShapeEvent"),
             QByteArrayLiteral("CBaseEvent")});
        return chain;
    }
};

TEST(SdkEvents, KindAndExactTypeCompareNames)
{
    const CBaseEvent base;
    const CEditBlendShapeEvent edit;
    const CObjectDataEvent data;
    const CDerivedEditEvent derived;
    struct Case
    {
        const CBaseEvent* event;
        const CBaseEvent* sample;
        bool kind;
        bool exact;
    };
    const Case cases[] = {
        {&edit, &edit, true, true},     {&derived, &edit, true, false}, {&edit, &derived, false, false},
        {&data, &edit, false, false},   {&edit, &base, true, false},    {&base, &edit, false, false},
        {&data, &data, true, true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.event->IsKindOf(*c.sample), c.kind) << c.event->TypeName().constData() << " ~ "
                                                        << c.sample->TypeName().constData();
        EXPECT_EQ(c.event->IsExactType(*c.sample), c.exact);
    }
}

// Opens the protected registry to the test: events keep references to their chains.
class CChainRegistrar : public CBaseEvent
{
public:
    static const QList<QByteArray>& Register(const QList<QByteArray>& chain) { return RegisterChain(chain); }
};

TEST(SdkEvents, RegisteredChainsStayAtTheirAddressWhenMoreRegister)
{
    struct Held
    {
        const QList<QByteArray>* chain;
        QByteArray first;
    };
    std::vector<Held> held;
    // Enough distinct chains to make any growing contiguous store reallocate several times.
    for (int i = 0; i < 200; ++i) {
        const QByteArray name = "CGrowEvent" + QByteArray::number(i);
        const QList<QByteArray>& chain = CChainRegistrar::Register({name, QByteArrayLiteral("CBaseEvent")});
        held.push_back({&chain, name});
    }
    for (const Held& h : held) {
        ASSERT_EQ(h.chain->size(), 2) << h.first.constData();
        EXPECT_EQ(h.chain->first(), h.first);
        EXPECT_EQ(h.chain->last(), QByteArrayLiteral("CBaseEvent"));
    }
    // Registering a known chain again hands out the same one.
    const QList<QByteArray>& again =
        CChainRegistrar::Register({QByteArrayLiteral("CGrowEvent7"), QByteArrayLiteral("CBaseEvent")});
    EXPECT_EQ(&again, held[7].chain);
    // The built-in events registered before still answer by name.
    const CEditBlendShapeEvent edit;
    const CBaseEvent base;
    EXPECT_TRUE(edit.IsKindOf(base));
    EXPECT_EQ(edit.TypeName(), QByteArrayLiteral("CEditBlendShapeEvent"));
}

TEST(SdkArrayList, ReportsRangeErrorsAsResults)
{
    QV::CArrayList<int> list;
    EXPECT_EQ(list.Add(1), QV::kOk);
    EXPECT_EQ(list.Add(2), QV::kOk);
    int value = 0;
    EXPECT_EQ(list.Get(1, value), QV::kOk);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(list.Get(2, value), QV::kOutOfRange);
    EXPECT_EQ(list.Get(-1, value), QV::kOutOfRange);
    EXPECT_EQ(list.RemoveAt(5), QV::kOutOfRange);
    EXPECT_EQ(list.Reserve(-1), QV::kOutOfRange);
    EXPECT_EQ(list.RemoveAt(0), QV::kOk);
    EXPECT_EQ(list.GetCount(), 1);
    EXPECT_EQ(list[0], 2);
    EXPECT_TRUE(list.Contains(2));
    EXPECT_FALSE(list.Contains(1));
}

TEST(SdkProfile, ReadsSectionsKeysAndNumbers)
{
    QV::CProfile profile;
    ASSERT_EQ(profile.Parse("; sizes\n[GoZTextureSize]\nCount = 2\r\nSize0=512\nSize1 = big\n[Other]\nCount=9\n"),
              QV::kOk);
    int count = 0;
    EXPECT_EQ(profile.ReadInt(QStringLiteral("gozTextureSize"), QStringLiteral("count"), count), QV::kOk);
    EXPECT_EQ(count, 2);
    unsigned long long size = 0;
    EXPECT_EQ(profile.ReadUint64(QStringLiteral("GoZTextureSize"), QStringLiteral("Size0"), size), QV::kOk);
    EXPECT_EQ(size, 512u);
    EXPECT_EQ(profile.ReadUint64(QStringLiteral("GoZTextureSize"), QStringLiteral("Size1"), size), QV::kFail);
    EXPECT_EQ(profile.ReadUint64(QStringLiteral("GoZTextureSize"), QStringLiteral("Size2"), size), QV::kFail);
    EXPECT_EQ(profile.ReadInt(QStringLiteral("Other"), QStringLiteral("Count"), count), QV::kOk);
    EXPECT_EQ(count, 9);
    QV::CProfile missing;
    EXPECT_EQ(missing.Open(QStringLiteral("/no/such/GoZTextureSize.ini")), QV::kOutOfMemory);
    EXPECT_FALSE(missing.IsOpen());
}

} // namespace

#include "Classification/ColorMap.hpp"
#include "Classification/OwnerMap.hpp"
#include "Classification/TreeFixture.hpp"
#include "ViewTestSupport.hpp"
#include "Views/ColorMapStore.hpp"
#include "Views/MapLegend.hpp"
#include "Views/MapPalette.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <QSignalSpy>

#include <set>

namespace tarnwick {
namespace {

using testing::waitFor;

TEST(MapPaletteTest, EveryGroupOfAModeHasItsOwnColorAndNoneIsAGrey)
{
    std::set<QRgb> content;
    for (ContentCategory category : allContentCategories) {
        QColor color = MapPalette::group(ColorGroup::content(category), 0);
        content.insert(color.rgb());
        EXPECT_GT(color.hsvSaturationF(), 0.15) << ContentCategories::displayLabel(category);
    }
    EXPECT_EQ(content.size(), allContentCategories.size());

    std::set<QRgb> dates;
    for (DateGroup group : allDateGroups)
        dates.insert(MapPalette::group(ColorGroup::date(group), 0).rgb());
    EXPECT_EQ(dates.size(), allDateGroups.size());

    std::set<QRgb> owners;
    for (std::size_t bucket = 0; bucket < 12; ++bucket)
        owners.insert(MapPalette::group(ColorGroup::owner("app" + std::to_string(bucket)), bucket).rgb());
    EXPECT_EQ(owners.size(), 12u);

    // Mixed and unknown say "no single group": greys, told apart from each other.
    for (QColor grey : { MapPalette::mixed(), MapPalette::unknown() })
        EXPECT_LT(grey.hsvSaturationF(), 0.12);
    EXPECT_NE(MapPalette::mixed(), MapPalette::unknown());
}

TEST(MapPaletteTest, SharesAndRatiosRunAlongTheirGradients)
{
    for (ColorMode mode : { ColorMode::caches, ColorMode::hiddenFromFinder }) {
        double previous = -1;
        for (double fraction : { 0.0, 0.01, 0.1, 0.5, 1.0 }) {
            double saturation = MapPalette::share(mode, fraction).hsvSaturationF();
            EXPECT_GT(saturation, previous) << ColorModes::title(mode) << " at " << fraction;
            previous = saturation;
        }
        EXPECT_EQ(MapPalette::share(mode, 2.0), MapPalette::share(mode, 1.0)) << "shares above 1 are clamped";
    }
    QColor less = MapPalette::ratio(0.25);
    QColor same = MapPalette::ratio(1.0);
    QColor more = MapPalette::ratio(4.0);
    EXPECT_GT(less.green(), less.red());
    EXPECT_GT(more.red(), more.green());
    EXPECT_LT(same.hsvSaturationF(), 0.12);
    EXPECT_EQ(MapPalette::ratio(0.0), MapPalette::unknown());
    EXPECT_EQ(MapPalette::ratio(-1.0), MapPalette::unknown());
}

TEST(MapPaletteTest, OuterRingsAreLighterAndTextStaysReadable)
{
    QColor base = MapPalette::group(ColorGroup::content(ContentCategory::documents), 0);
    EXPECT_EQ(MapPalette::forRing(base, 0), base);
    EXPECT_GT(MapPalette::forRing(base, 3).lightness(), MapPalette::forRing(base, 1).lightness());
    EXPECT_EQ(MapPalette::textOn(QColor(0x20, 0x20, 0x60)), QColor(Qt::white));
    EXPECT_NE(MapPalette::textOn(MapPalette::available()), QColor(Qt::white));
}

// A folder of dated files: two changed today, one long ago, one without a date.
std::shared_ptr<const ScanTree> datedTree(const DateGroup::Boundaries& boundaries)
{
    testing::TreeFixture fixture("dated");
    auto today = static_cast<std::int32_t>(boundaries.seconds[0] + 3600);
    auto old = static_cast<std::int32_t>(boundaries.seconds[3] - 86400 * 10);
    fixture.add({ "new/a.mp4", 4'000'000, NodeKind::file, std::nullopt, today, today });
    fixture.add({ "new/b.mp4", 2'000'000, NodeKind::file, std::nullopt, today, today });
    fixture.add({ "old/c.pdf", 3'000'000, NodeKind::file, std::nullopt, old, old });
    fixture.add({ "old/.hidden.bin", 1'000'000, NodeKind::file, std::nullopt, old, old, true });
    fixture.add("undated.txt", 500'000);
    return fixture.finish();
}

TEST(LegendContentTest, DateGroupsKeepTheirOrderWithTheirWordsAndShares)
{
    auto boundaries = DateGroup::Boundaries::current();
    auto tree = datedTree(boundaries);
    for (auto [mode, first] : { std::pair { ColorMode::lastModified, "Today" }, std::pair { ColorMode::created, "Today" } }) {
        auto colors = ColorMap::make(mode, tree, { nullptr, nullptr, boundaries });
        LegendContent legend = LegendContent::make(*colors, *tree, NodeID::root(), nullptr, std::nullopt);
        ASSERT_EQ(legend.items.size(), 3u) << ColorModes::title(mode);
        EXPECT_EQ(legend.items[0].label, QString::fromUtf8(first));
        EXPECT_EQ(legend.items[0].share, QStringLiteral("57 %"));
        QString olderWords = mode == ColorMode::lastModified ? QStringLiteral("Not changed for over a year") : QStringLiteral("Created over a year ago");
        EXPECT_EQ(legend.items[1].label, olderWords);
        EXPECT_EQ(legend.items[2].label, ViewTexts::noDate);
        EXPECT_FALSE(legend.gradient);
        EXPECT_EQ(legend.keys.front().label, ViewTexts::mixed);
    }
}

TEST(LegendContentTest, ContentGroupsComeLargestFirstAndShareModesSumUpTheFolder)
{
    auto tree = datedTree(DateGroup::Boundaries::current());
    auto content = ColorMap::make(ColorMode::contentType, tree);
    LegendContent legend = LegendContent::make(*content, *tree, NodeID::root(), nullptr, std::nullopt);
    ASSERT_GE(legend.items.size(), 2u);
    for (std::size_t i = 1; i < legend.items.size(); ++i)
        EXPECT_GE(legend.items[i - 1].bytes, legend.items[i].bytes);
    EXPECT_EQ(legend.items.front().label.toStdString(), ContentCategories::displayLabel(ContentCategory::video));

    auto hidden = ColorMap::make(ColorMode::hiddenFromFinder, tree);
    LegendContent shares = LegendContent::make(*hidden, *tree, NodeID::root(), nullptr, std::nullopt);
    EXPECT_TRUE(shares.gradient);
    EXPECT_TRUE(shares.items.empty());
    EXPECT_EQ(shares.summary, ViewTexts::hiddenOf(QStringLiteral("10 %"), QStringLiteral("scan")));

    auto ratio = ColorMap::make(ColorMode::onDiskVsSize, tree);
    LegendContent ratios = LegendContent::make(*ratio, *tree, NodeID::root(), nullptr, std::nullopt);
    EXPECT_EQ(ratios.summary, ViewTexts::ratioOf(QStringLiteral("1.00"), QStringLiteral("scan")));
}

TEST(LegendContentTest, OwnerGroupsTakeTheOwnerMapsNames)
{
    testing::TreeFixture fixture("home");
    fixture.add("Videos/a.mp4", 1'000'000);
    auto tree = fixture.finish(TreeBuilder::Metadata::included, "/home/ann");
    OwnerIndex index;
    index.setSystemName("Debian GNU/Linux 12");
    OwnerPlaces places(index);
    auto owners = std::make_shared<const OwnerMap>(OwnerMap::build(*tree, places));
    auto colors = ColorMap::make(ColorMode::owner, tree, { nullptr, owners->buckets(tree), std::nullopt });
    EXPECT_EQ(LegendContent::label(ColorGroup::macOS(), ColorMode::owner, owners.get()), QStringLiteral("Debian GNU/Linux 12"));
    EXPECT_EQ(LegendContent::label(ColorGroup::noOwner(), ColorMode::owner, owners.get()), QStringLiteral("No owner"));
    LegendContent legend = LegendContent::make(*colors, *tree, NodeID::root(), owners.get(), std::nullopt);
    ASSERT_EQ(legend.items.size(), 1u);
    EXPECT_EQ(legend.items[0].label, QStringLiteral("No owner"));
    EXPECT_EQ(legend.items[0].share, QStringLiteral("100 %"));
}

TEST(ColorMapStoreTest, MakesSlowModesOffTheMainThreadOnceAndForgetsOldTrees)
{
    ColorMapStore store;
    QSignalSpy ready(&store, &ColorMapStore::ready);
    auto tree = datedTree(DateGroup::Boundaries::current());

    // What only reads the tree is there at once.
    EXPECT_NE(store.colors(tree, ColorMode::onDiskVsSize), nullptr);
    EXPECT_EQ(ready.count(), 0);

    EXPECT_EQ(store.colors(tree, ColorMode::lastModified), nullptr);
    EXPECT_EQ(store.colors(tree, ColorMode::lastModified), nullptr);
    EXPECT_TRUE(store.isMaking());
    ASSERT_TRUE(waitFor([&] { return !store.isMaking(); }));
    EXPECT_EQ(ready.count(), 1) << "asked twice, made once";
    auto made = store.colors(tree, ColorMode::lastModified);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->mode(), ColorMode::lastModified);
    EXPECT_EQ(store.colors(tree, ColorMode::lastModified), made);

    EXPECT_EQ(store.colors(tree, ColorMode::owner), nullptr);
    ASSERT_TRUE(waitFor([&] { return !store.isMaking(); }));
    EXPECT_NE(store.owners(tree.get()), nullptr);

    auto other = datedTree(DateGroup::Boundaries::current());
    store.keepOnly({ other.get() });
    EXPECT_EQ(store.owners(tree.get()), nullptr);
    EXPECT_EQ(store.colors(tree, ColorMode::lastModified), nullptr) << "made again after being forgotten";
    ASSERT_TRUE(waitFor([&] { return !store.isMaking(); }));
}

}
}

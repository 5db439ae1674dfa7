#include "Favorites.hpp"
#include "History/HistoryStore.hpp"
#include "Platform/UserDefaults.hpp"
#include "Views/SourceSidebar.hpp"
#include "ViewTestSupport.hpp"

#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QThreadPool>

#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

namespace tarnwick {
namespace {

using testing::waitFor;

// A history whose clock, asked in the middle of a save that holds the store, waits until the
// test lets it go: the store stays busy for as long as a slow disk would keep it.
class BusyHistory {
public:
    BusyHistory(const std::string& directory)
        : m_store(std::move(*HistoryStore::open(directory, Calendar::fixed(0), HistoryStore::defaultSizeLimit, [this] { return now(); })))
    {
    }
    ~BusyHistory()
    {
        release();
        if (m_saver.joinable())
            m_saver.join();
    }

    HistoryStore& store() { return *m_store; }
    void save(const std::string& place) { ASSERT_TRUE(m_store->save(HistorySource { place, "dev:8:1" }, testing::tinySnapshot()).has_value()); }
    // Saves place on a thread of its own, returning once that save holds the store.
    void saveAndHold(const std::string& place)
    {
        m_holding = true;
        m_saver = std::thread([this, place] { save(place); });
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_held; });
    }
    void release()
    {
        std::scoped_lock lock(m_mutex);
        m_holding = false;
        m_changed.notify_all();
    }

private:
    Date now()
    {
        std::unique_lock lock(m_mutex);
        if (m_holding && std::this_thread::get_id() == m_saver.get_id()) {
            m_held = true;
            m_changed.notify_all();
            m_changed.wait(lock, [&] { return !m_holding; });
        }
        return std::chrono::system_clock::now();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_holding = false;
    bool m_held = false;
    std::thread m_saver;
    std::unique_ptr<HistoryStore> m_store;
};

// The sidebar reads the disks and the history off the main thread: a save that keeps the
// history busy (or a disk that doesn't answer) never holds the window, and the sidebar
// catches up once it is done.
TEST(SourceSidebarTest, ABusyHistoryNeverHoldsTheWindow)
{
    fixtures::TempFolder folder;
    BusyHistory history(folder / "History");
    history.save("/home/ann/Projects");
    history.saveAndHold("/home/ann/Music");
    // Let a failing sidebar go in the end, so that the test fails rather than hangs.
    std::promise<void> checked;
    std::thread rescue([&, done = checked.get_future()] {
        done.wait_for(std::chrono::seconds(5));
        history.release();
    });

    UserDefaults defaults(folder / "defaults.json");
    Favorites favorites(defaults);
    QElapsedTimer clock;
    clock.start();
    SourceSidebar sidebar({ folder.path(), &history.store() }, favorites);
    sidebar.refresh();
    EXPECT_LT(clock.elapsed(), 2'000);

    checked.set_value();
    rescue.join();
    auto listed = [&](const std::string& path) {
        for (const SourceSidebar::Source& source : sidebar.sources()) {
            if (source.kind == SourceSidebar::Kind::history && source.path == path)
                return true;
        }
        return false;
    };
    sidebar.refresh();
    EXPECT_TRUE(waitFor([&] { return listed("/home/ann/Projects") && listed("/home/ann/Music"); }));
    // A reading asked for meanwhile may still use the history, which goes with this test.
    QThreadPool::globalInstance()->waitForDone();
}

}
}

// Many threads at once over every interface method of two providers and the cache's pipeline
// operations, with listeners that call back with any method (on their own thread and on threads
// they start), die or come and go, and framing engines attached and detached meanwhile; then
// the state the calls leave behind must agree.
#include <algorithm>
#include <thread>

#include "support/ProviderOps.h"
#include "support/ProviderTest.h"
#include "support/Watchdog.h"

using namespace testing_support;

namespace {

// kSoon and kLater: the notifications each dying listener takes before its process dies.
constexpr int kThreads = 8, kOpsPerThread = 2000, kSettleOps = 60, kSoon = 40, kLater = 200;

const auto problem = [](const std::string& what) { ADD_FAILURE() << what; };
std::mutex gLock;                   // guards gStarted
std::vector<std::thread> gStarted;  // threads that listeners started
// Calls made from inside a listener do not call back again on the same thread.
thread_local bool tInside = false;

// A listener of `p` that, while `active`, calls back into it from its callbacks with an
// operation of the table: on the calling thread, or now and then on a thread it starts.
sp<RecordingListener> reentrant(ZorvCameraProvider& p, const std::atomic<bool>& active) {
    sp<RecordingListener> listener = new RecordingListener("reentrant");
    listener->onEvent([&p, &active](const std::string&) {
        if (!active || tInside) return;
        thread_local RandomChoices in(std::hash<std::thread::id>()(std::this_thread::get_id()));
        const ProviderOp& op = providerOps()[in.index(providerOps().size())];
        auto run = [&p, &op](Choices& choices) {
            OpContext c{p, choices, problem, nullptr};
            tInside = true;
            op.run(c);
            tInside = false;
        };
        if (in.index(8) != 0) return run(in);
        std::lock_guard hold(gLock);
        gStarted.emplace_back(
                [run, own = RandomChoices(in.pick(0, 1 << 20))]() mutable { run(own); });
    });
    return listener;
}

// A listener whose process dies after `events` notifications.
sp<RecordingListener> dying(const std::string& name, int events) {
    sp<RecordingListener> listener = new RecordingListener(name);
    // Its callbacks come one at a time, under the provider's lock.
    listener->onEvent([raw = listener.get(), heard = 0, events](const std::string&) mutable {
        if (++heard == events) raw->failWith(::android::DEAD_OBJECT);
    });
    return listener;
}

// Runs `body(choices)` on `threads` threads at once and waits for them.
void together(int threads, const std::function<void(RandomChoices&)>& body) {
    std::vector<RandomChoices> in;
    for (int t = 0; t < threads; ++t) in.emplace_back(1000 + t);
    std::vector<std::thread> running;
    for (RandomChoices& choices : in) running.emplace_back(body, std::ref(choices));
    for (std::thread& t : running) t.join();
}

}  // namespace

TEST(StressConcurrencyTest, EveryMethodOfTwoProvidersWithListenersThatCallBackEnginesThatGo) {
    // Given two providers, the multistream flag on (so that the availability switch nests the
    // session lock inside the provider lock); on the first two plain listeners, two that die
    // mid-run and one that calls back; on the second one that calls back
    setProp("persist.vendor.multistream.enable", "1");
    sp<ZorvCameraProvider> providers[] = {new ZorvCameraProvider(), new ZorvCameraProvider()};
    ZorvCameraProvider& p = *providers[0];
    std::atomic<bool> reentry{true};
    sp<RecordingListener> first = new RecordingListener("first"), second = new RecordingListener;
    sp<RecordingListener> soon = dying("soon", kSoon), later = dying("later", kLater);
    for (const auto& l : {first, second, soon, later}) p.setListener(l);
    for (const auto& provider : providers) provider->setListener(reentrant(*provider, reentry));
    Watchdog watchdog(std::chrono::seconds(60), "stress clients");

    // When clients run random mixes over both providers while engines come and go
    std::atomic<bool> churning{true};
    std::thread churn([&churning] {
        while (churning) {
            RecordingEngine engine;  // attached until it is deleted
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    });
    const auto& ops = providerOps();
    together(kThreads, [&](RandomChoices& in) {
        std::vector<OpContext> contexts;  // one per provider, with the client's own listener
        for (const auto& q : providers)
            contexts.push_back({*q, in, problem, new RecordingListener});
        for (int i = 0; i < kOpsPerThread; ++i)
            ops[in.index(ops.size())].run(contexts[in.index(2)]);
        for (OpContext& c : contexts) c.provider.clearListener(c.listener);
    });
    churning = false;
    churn.join();
    reentry = false;
    for (std::thread& t : gStarted) t.join();

    // Then nothing impossible was seen, and the two plain listeners heard the same
    // notifications in the same order, crops only when they changed
    EXPECT_EQ(first->events(), second->events());
    const std::vector<SceneControl> crops = first->crops();
    for (size_t i = 1; i < crops.size(); ++i) EXPECT_FALSE(crops[i - 1] == crops[i]) << i;
    // And each dying listener was called up to its death, logged once and dropped
    EXPECT_EQ(soon->events().size(), size_t(kSoon));
    EXPECT_EQ(later->events().size(), size_t(kLater));
    EXPECT_EQ(Peer::listenerCount(p), 3u);
    const Lines errors = providerLines(kError);
    EXPECT_EQ(errors.size(), 2u);
    for (const LogLine& l : errors) EXPECT_NE(l.text.find("callback: " + kDead), l.text.npos) << l;

    // When, on the first provider, tracking modes are set at once while a listener sets
    // another mode from what it is told
    sp<RecordingListener> changer = new RecordingListener("changer");
    changer->onEvent([&p](const std::string& e) {
        if (e == "cameraDeviceTrackingChange 0 1") p.setTrackingMode("0", TrackingMode::MODE_4);
        if (e.rfind("onCameraCropApplied crops=[{1", 0) != 0 || tInside) return;
        tInside = true;  // pans from the crops it is told, without recursion
        p.moveCamera("0", CameraMoveDirection::PAN_LEFT, 7);
        tInside = false;
    });
    p.setListener(changer);
    p.setTrackingMode("0", TrackingMode(p.getTrackingMode("0") == TrackingMode::MODE_1 ? 0 : 1));
    together(4, [&](RandomChoices& in) {
        for (int i = 0; i < kSettleOps; ++i) p.setTrackingMode("0", TrackingMode(in.pick(0, 5)));
    });
    // Then the session's mode, the property and every listener's last notification agree
    expectAgreement({first, second, changer}, false);

    // When, with tracking off, moves, presets and zoom limits run at once while a listener
    // pans from the crops it is told
    p.setTrackingMode("0", TrackingMode::OFF);
    RecordingEngine engine;  // records the crops in the order they are stored
    first->clear();
    p.moveCamera("0", CameraMoveDirection::ZOOM_IN, 10);
    const std::function<void(RandomChoices&)> cropCalls[] = {
            [&](auto& in) {
                p.moveCamera("0", CameraMoveDirection(in.pick(1, 7)), in.pick(1, 40));
            },
            [&](auto& in) { p.gotoPreset("0", in.pick(0, 3)); },
            [&](auto& in) { p.setZoomInLimit("0", in.pick(1, 5)); }};
    together(4, [&](RandomChoices& in) {
        for (int i = 0; i < kSettleOps; ++i) cropCalls[in.index(3)](in);
    });

    // Then the crop in force is the last announced, and each listener heard the crops in the
    // order they were stored
    std::vector<SceneControl> stored;
    for (const RecordingEngine::Call& call : engine.calls()) {
        if (call.operation == "onPTZControl") stored.push_back(call.scene);
    }
    ASSERT_FALSE(first->crops().empty());
    for (const auto& l : {first, second}) EXPECT_EQ(l->crops().back(), ptz());
    EXPECT_EQ(Peer::lastCrop(p), ptz());
    auto at = stored.begin();  // each heard crop was stored after the one heard before
    for (const SceneControl& s : first->crops()) {
        at = std::find(at, stored.end(), s);
        ASSERT_TRUE(at != stored.end()) << describe(s);
        ++at;
    }
}

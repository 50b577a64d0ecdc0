#include <filesystem>
#include <vector>

#include "benchmarks/outlook/Desk.h"
#include "benchmarks/support/Row.h"

namespace {

using namespace outlook_benchmarks;
using benchmark_support::Effort;
using benchmark_support::Row;

constexpr std::size_t kKilo = 1 << 10;
constexpr std::size_t kMega = 1 << 20;
constexpr std::uint32_t kSlowMs = 5000;
constexpr int kBatch = 10;

stand_ins::Actions Block_(std::uint32_t delayMs = 0) {
    stand_ins::Actions actions;
    actions.block = true;
    actions.delay = delayMs;
    return actions;
}

/// The event of one mail at a time. The agent blocks them all, which spares Outlook the delivery.
template <std::size_t Bytes>
void PutAside_(benchmark::State& state) {
    Desk desk(Block_());
    int done = 0;
    for (auto turn : state) {
        state.PauseTiming();
        const auto mail = desk.SavedMail(MailOf(Bytes));
        state.ResumeTiming();
        desk.Send(mail);
        state.PauseTiming();
        desk.AwaitDone(++done);
        state.ResumeTiming();
    }
}

template <std::size_t Bytes>
void WriteParts_(benchmark::State& state) {
    const Folder folder;
    const auto mail = MailOf(Bytes);
    for (auto turn : state) {
        WriteParts(mail, folder.Path());
        state.PauseTiming();
        std::filesystem::remove_all(folder.Path());
        std::filesystem::create_directory(folder.Path());
        state.ResumeTiming();
    }
}

std::vector<stand_ins::DispatchPtr> Mails_(Desk& desk, int count) {
    std::vector<stand_ins::DispatchPtr> mails;
    for (int i = 0; i < count; ++i) {
        mails.push_back(desk.SavedMail(MailOf(10 * kKilo)));
    }
    return mails;
}

/// A batch of mails, one event after the other, while the agent thinks about those before.
template <std::uint32_t DelayMs>
void PutAsideInBatch_(benchmark::State& state) {
    Desk desk(Block_(DelayMs));
    const auto mails = Mails_(desk, kBatch);
    std::size_t sent = 0;
    for (auto turn : state) {
        desk.Send(mails.at(sent++));
    }
    desk.AwaitDone(kBatch);
}

/// The same while so many mails are in flight.
template <int InFlight>
void PutAsideBeside_(benchmark::State& state) {
    Desk desk({}, true);
    const auto mails = Mails_(desk, InFlight + kBatch);
    std::size_t sent = 0;
    while (sent < InFlight) {
        desk.Send(mails.at(sent++));
    }
    for (auto turn : state) {
        desk.Send(mails.at(sent++));
    }
    desk.Release();
    desk.AwaitDone(InFlight + kBatch);
}

/// From the moment at which the agent answers until each of so many mails has left: the time of one.
template <int Mails>
void AllLeave_(benchmark::State& state) {
    while (state.KeepRunningBatch(Mails)) {
        state.PauseTiming();
        {
            Desk desk({}, true);
            for (const auto& mail : Mails_(desk, Mails)) {
                desk.Send(mail);
            }
            state.ResumeTiming();
            desk.Release();
            desk.AwaitDone(Mails);
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}

const Row kilo10("ItemSend, 10 KB mail / write its files", "", PutAside_<10 * kKilo>, WriteParts_<10 * kKilo>);
const Row mega1("ItemSend, 1 MB mail / write its files", "", PutAside_<kMega>, WriteParts_<kMega>);
const Row mega20("ItemSend, 20 MB mail / write its files", "", PutAside_<20 * kMega>, WriteParts_<20 * kMega>);

constexpr Effort kFew{.repetitions = 5, .iterations = kBatch, .floorIterations = kBatch};
const Row slow("ItemSend, agent takes 5 s / answers at once", "equal", PutAsideInBatch_<kSlowMs>, PutAsideInBatch_<0>,
               kFew);
const Row beside1("ItemSend beside 1 mail in flight / none", "", PutAsideBeside_<1>, PutAsideBeside_<0>, kFew);
const Row beside10("ItemSend beside 10 / none", "", PutAsideBeside_<10>, PutAsideBeside_<0>, kFew);
const Row beside100("ItemSend beside 100 / none", "", PutAsideBeside_<100>, PutAsideBeside_<0>, kFew);
const Row beside1000("ItemSend beside 1000 / none", "", PutAsideBeside_<1000>, PutAsideBeside_<0>,
                     {.repetitions = 3, .iterations = kBatch, .floorIterations = kBatch});

const Row leave10("one of 10 leaves, all answered at once / alone", "", AllLeave_<10>, AllLeave_<1>,
                  {.repetitions = 5, .iterations = 10, .floorIterations = 10});
const Row leave100("one of 100 leaves / alone", "", AllLeave_<100>, AllLeave_<1>,
                   {.repetitions = 3, .iterations = 100, .floorIterations = 10});
const Row leave1000("one of 1000 leaves / alone", "", AllLeave_<1000>, AllLeave_<1>,
                    {.repetitions = 3, .iterations = 1000, .floorIterations = 10});

} // namespace

// The class trees that programs and their virtual tables rely on, as checks of the compiler.
#include "ClassTrees.h"

#include <murvane/audio/batch/AudioFileEvaluator.h>
#include <murvane/audio/batch/AudioSetApplicationHelper.h>
#include <murvane/audio/batch/AudioSetParser.h>
#include <murvane/audio/input/AudioFileReader.h>
#include <murvane/audio/input/AudioLinearWindower.h>
#include <murvane/audio/input/AudioSignalWindow.h>
#include <murvane/audio/input/AudioSink.h>
#include <murvane/audio/input/AudioWindowedFileReader.h>
#include <murvane/audio/input/TimeSource.h>
#include <murvane/core/Object.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <type_traits>
#include <vector>

namespace {

using namespace Zantrix;
using namespace Zantrix::Audio;
using namespace class_trees;
using Zantrix::Math::DoubleVector;

struct FirstOfItsTable {
    virtual void first() = 0;

protected:
    ~FirstOfItsTable() = default;
};

// --- roots ---

static_assert(std::has_virtual_destructor_v<Object>);
static_assert(hasOneVirtual<Cloneable, Object> && std::is_abstract_v<Cloneable>);
static_assert(hasOneVirtual<Resettable, Object> && std::is_abstract_v<Resettable>);
static_assert(hasOneVirtual<OutputStreamable, Object> && std::is_abstract_v<OutputStreamable>);
static_assert(std::is_same_v<decltype(&Cloneable::clone), Cloneable* (Cloneable::*)() const>);
static_assert(std::is_same_v<decltype(&Resettable::reset), bool (Resettable::*)()>);
static_assert(
    std::is_same_v<decltype(&OutputStreamable::write), std::ostream& (OutputStreamable::*)(std::ostream&) const>);

// --- input: sinks and time sources ---

static_assert(hasOneVirtual<TimeSource, Object> && std::is_abstract_v<TimeSource>);
static_assert(hasOne<AudioSink, Object> && std::is_abstract_v<AudioSink>);
static_assert(hasOne<LinearAudioSink, AudioSink> && std::is_abstract_v<LinearAudioSink>);
static_assert(!hasOneVirtual<LinearAudioSink, AudioSink>, "one table for both");
static_assert(std::is_same_v<decltype(&TimeSource::getCurrentAudioTime), double (TimeSource::*)() const>);
static_assert(std::is_same_v<decltype(&LinearAudioSink::pushLinearAudio),
                             bool (LinearAudioSink::*)(const double*, const double*)>);

TEST(InterfaceShape, TimeSourceAnswersTheTimeBeforeItsOtherQuery) {
    EXPECT_EQ(slotOf(&TimeSource::getCurrentTime) - slotOf(&TimeSource::getCurrentAudioTime), 1);
}

TEST(InterfaceShape, LinearSinkFollowsTheGenericOneInItsTable) {
    EXPECT_EQ(slotOf(&LinearAudioSink::pushLinearAudio) - slotOf(&AudioSink::pushAudio), 1);
}

// --- input: windower ---

static_assert(hasOneVirtual<LinearAudioWindower, LinearAudioSink>);
static_assert(hasOneVirtual<LinearAudioWindower, TimeSource>);
static_assert(hasOneVirtual<LinearAudioWindower, Resettable>);
static_assert(hasOneVirtual<LinearAudioWindower, Object>);
static_assert(isCopyable<LinearAudioWindower> && std::is_default_constructible_v<LinearAudioWindower>);
static_assert(isCopyable<LinearAudioWindower::Config> && !std::is_polymorphic_v<LinearAudioWindower::Config>);
static_assert(std::is_same_v<decltype(&LinearAudioWindower::configure),
                             bool (LinearAudioWindower::*)(const LinearAudioWindower::Config&)>);
static_assert(std::is_same_v<decltype(&LinearAudioWindower::getConfig),
                             const LinearAudioWindower::Config& (LinearAudioWindower::*)() const>);
static_assert(std::is_same_v<decltype(&LinearAudioWindower::popWindow), bool (LinearAudioWindower::*)(DoubleVector&)>);
static_assert(
    std::is_same_v<decltype(&LinearAudioWindower::setCurrentAudioTime), bool (LinearAudioWindower::*)(double)>);

TEST(InterfaceShape, WindowerLetsDerivedOnesAnswerTheTotalTime) {
    struct Derived : LinearAudioWindower {
        double getTotalPushedAudioTime() const override { return 42.0; }
    };
    const Derived derived;
    const LinearAudioWindower& windower = derived;
    EXPECT_EQ(windower.getTotalPushedAudioTime(), 42.0);
}

// --- input: file readers ---

static_assert(hasOneVirtual<AudioFileReader, TimeSource>);
static_assert(hasOneVirtual<AudioFileReader, Object>);
static_assert(isCopyable<AudioFileReader> && std::is_default_constructible_v<AudioFileReader>);
static_assert(std::is_same_v<decltype(&AudioFileReader::setSourceAudioFile), bool (AudioFileReader::*)(const char*)>);
static_assert(
    std::is_same_v<decltype(&AudioFileReader::getNextLinearFrames), bool (AudioFileReader::*)(DoubleVector&)>);
static_assert(std::is_same_v<decltype(&AudioFileReader::getAllLinearFrames), bool (AudioFileReader::*)(DoubleVector&)>);
static_assert(std::is_same_v<decltype(&AudioFileReader::setNbOfFramesToRead), bool (AudioFileReader::*)(std::size_t)>);
static_assert(std::is_same_v<decltype(&AudioFileReader::getSamplingRate), std::size_t (AudioFileReader::*)() const>);

static_assert(hasOne<WindowedAudioFileReader, AudioFileReader>);
static_assert(!hasOneVirtual<WindowedAudioFileReader, AudioFileReader>);
static_assert(hasOneVirtual<WindowedAudioFileReader, TimeSource>);
static_assert(isCopyable<WindowedAudioFileReader> && std::is_default_constructible_v<WindowedAudioFileReader>);
static_assert(
    std::is_same_v<decltype(&WindowedAudioFileReader::getNextLinearFrames), bool (AudioFileReader::*)(DoubleVector&)>,
    "inherited, not overridden");
static_assert(std::is_same_v<decltype(&WindowedAudioFileReader::setSourceAudioFile),
                             bool (WindowedAudioFileReader::*)(const char*)>);
static_assert(std::is_same_v<decltype(&WindowedAudioFileReader::gotoStart), bool (WindowedAudioFileReader::*)()>);
static_assert(
    std::is_same_v<decltype(&WindowedAudioFileReader::gotoAudioTime), bool (WindowedAudioFileReader::*)(double)>);
static_assert(std::is_same_v<decltype(&WindowedAudioFileReader::setChunkReadFactor),
                             bool (WindowedAudioFileReader::*)(std::size_t)>);

TEST(InterfaceShape, ReaderKeepsTheOrderOfItsOperations) {
    const std::ptrdiff_t first = slotOf(&AudioFileReader::setSourceAudioFile);
    EXPECT_EQ(slotOf(&AudioFileReader::gotoStart) - first, 1);
    EXPECT_EQ(slotOf(&AudioFileReader::gotoAudioTime) - first, 2);
    EXPECT_EQ(slotOf(&AudioFileReader::getNextLinearFrames) - first, 3);
    EXPECT_EQ(slotOf(&WindowedAudioFileReader::setSourceAudioFile), first);
    EXPECT_EQ(slotOf(&WindowedAudioFileReader::getNextWindow) - first, 4);
}

// --- input: signal windows ---

static_assert(hasOneVirtual<SignalWindow, Cloneable>);
static_assert(hasOneVirtual<SignalWindow, Object> && std::is_abstract_v<SignalWindow>);
static_assert(hasOne<SignalWindowImpl, SignalWindow> && !hasOneVirtual<SignalWindowImpl, SignalWindow> &&
              std::is_abstract_v<SignalWindowImpl>);
static_assert(hasOne<HannWindow, SignalWindowImpl> && !std::is_abstract_v<HannWindow>);
static_assert(!std::is_constructible_v<SignalWindowImpl, std::size_t>, "for derived shapes only");
static_assert(std::is_constructible_v<HannWindow, std::size_t> && isCopyable<HannWindow>);
static_assert(
    std::is_same_v<decltype(&SignalWindow::getWeights), const std::vector<double>& (SignalWindow::*)() const>);
static_assert(std::is_same_v<decltype(&SignalWindow::getWeight), double (SignalWindow::*)(std::size_t) const>);
static_assert(std::is_same_v<decltype(&SignalWindow::getSize), double (SignalWindow::*)() const>);
static_assert(std::is_same_v<decltype(&HannWindow::clone), Cloneable* (HannWindow::*)() const>);

TEST(InterfaceShape, SignalWindowKeepsTheOrderOfItsOperations) {
    const std::ptrdiff_t first = slotOf(&SignalWindow::getWeights);
    EXPECT_EQ(slotOf(&SignalWindow::getWeight) - first, 1);
    EXPECT_EQ(slotOf(&SignalWindow::getSize) - first, 2);
}

// --- batch ---

static_assert(hasOne<AudioFileEvaluator, ObjectWithLogger> && hasOneVirtual<AudioFileEvaluator, Object>);
static_assert(isCopyable<AudioFileEvaluator> && std::is_default_constructible_v<AudioFileEvaluator>);
static_assert(
    std::is_same_v<decltype(&AudioFileEvaluator::configure),
                   bool (AudioFileEvaluator::*)(unsigned long long, LimitedObjPtr<AudioFileEvaluator::Strategy>,
                                                const char*, const char*)>);
static_assert(std::is_same_v<decltype(&AudioFileEvaluator::processFile), bool (AudioFileEvaluator::*)(const char*)>);

static_assert(std::is_abstract_v<AudioFileEvaluator::Strategy> && !hasOne<AudioFileEvaluator::Strategy, Object>);
static_assert(!std::has_virtual_destructor_v<AudioFileEvaluator::Strategy> &&
              sizeof(AudioFileEvaluator::Strategy) == sizeof(void*));

static_assert(hasOneVirtual<AudioSetParser, Object>);
static_assert(isCopyable<AudioSetParser> && std::is_default_constructible_v<AudioSetParser>);

static_assert(hasOneVirtual<AudioSetApplicationHelper, Object>);
static_assert(isCopyable<AudioSetApplicationHelper> && !std::is_default_constructible_v<AudioSetApplicationHelper>);
static_assert(!std::is_convertible_v<AudioSetApplicationHelper::Strategy*, AudioSetApplicationHelper>);
static_assert(std::is_abstract_v<AudioSetApplicationHelper::Strategy> &&
              std::has_virtual_destructor_v<AudioSetApplicationHelper::Strategy>);

TEST(InterfaceShape, EvaluationStrategyHasItsTwoOperationsAndNothingElseInItsTable) {
    EXPECT_EQ(slotOf(&AudioFileEvaluator::Strategy::evaluateWindow), slotOf(&FirstOfItsTable::first));
    EXPECT_EQ(slotOf(&AudioFileEvaluator::Strategy::getProbabilitiesInfo) -
                  slotOf(&AudioFileEvaluator::Strategy::evaluateWindow),
              1);
}

}  // namespace

#include "ClassTrees.h"

#include <murvane/audio/annotations/AnnotationBuilder.h>
#include <murvane/audio/annotations/AudioAmplitudeModulatedAnnotation.h>
#include <murvane/audio/annotations/AudioSingleFrequencyAnnotation.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <string>
#include <type_traits>

using namespace Zantrix;
using namespace Zantrix::Audio;
using namespace class_trees;

namespace {

// --- interfaces ---

static_assert(isInterface<AnnotationPrototype> && hasOneVirtual<AnnotationPrototype, Cloneable> &&
              hasNo<AnnotationPrototype, OutputStreamable>);
static_assert(isInterface<Annotation> && hasOneVirtual<Annotation, AnnotationPrototype> &&
              hasOneVirtual<Annotation, OutputStreamable> && hasOneVirtual<Annotation, Cloneable>);
static_assert(isInterface<SingleFrequencyAnnotation> && hasOneVirtual<SingleFrequencyAnnotation, Annotation> &&
              hasNo<SingleFrequencyAnnotation, AnnotationImpl>);
static_assert(isInterface<AmplitudeModulatedAnnotation> && hasOneVirtual<AmplitudeModulatedAnnotation, Annotation> &&
              hasNo<AmplitudeModulatedAnnotation, AnnotationImpl>);

// --- implementations ---

template <class A>
constexpr bool isAnnotation =
    hasOneVirtual<A, Annotation>&& hasOneVirtual<A, AnnotationPrototype>&& hasOneVirtual<A, OutputStreamable>&&
        hasOneVirtual<A, Cloneable>&& hasOneVirtual<A, Object>&& isCopyable<A> &&
    !std::is_abstract_v<A> && std::is_default_constructible_v<A> && std::has_virtual_destructor_v<A>;

static_assert(isAnnotation<AnnotationImpl> && hasNo<AnnotationImpl, SingleFrequencyAnnotation> &&
              hasNo<AnnotationImpl, AmplitudeModulatedAnnotation>);
static_assert(isAnnotation<SingleFrequencyAnnotationImpl> &&
              hasOneOrdinary<SingleFrequencyAnnotationImpl, AnnotationImpl> &&
              hasOneVirtual<SingleFrequencyAnnotationImpl, SingleFrequencyAnnotation> &&
              hasNo<SingleFrequencyAnnotationImpl, AmplitudeModulatedAnnotation>);
static_assert(isAnnotation<AmplitudeModulatedAnnotationImpl> &&
              hasOneOrdinary<AmplitudeModulatedAnnotationImpl, AnnotationImpl> &&
              hasOneVirtual<AmplitudeModulatedAnnotationImpl, AmplitudeModulatedAnnotation> &&
              hasNo<AmplitudeModulatedAnnotationImpl, SingleFrequencyAnnotation>);

// --- operations ---

static_assert(std::is_same_v<decltype(&AnnotationPrototype::getRegex), const char* (AnnotationPrototype::*)() const>);
static_assert(
    std::is_same_v<decltype(&AnnotationPrototype::getTypeName), const char* (AnnotationPrototype::*)() const>);
static_assert(std::is_same_v<decltype(&Annotation::getLabel), const std::string& (Annotation::*)() const>);
static_assert(std::is_same_v<decltype(&Annotation::setLabel), bool (Annotation::*)(const char*)>);
static_assert(std::is_same_v<decltype(&Annotation::getStartTime), double (Annotation::*)() const>);
static_assert(std::is_same_v<decltype(&Annotation::setStartTime), void (Annotation::*)(double)>);
static_assert(std::is_same_v<decltype(&Annotation::getStopTime), double (Annotation::*)() const>);
static_assert(std::is_same_v<decltype(&Annotation::setStopTime), void (Annotation::*)(double)>);
static_assert(std::is_same_v<decltype(&Annotation::isEqual), bool (Annotation::*)(const char*) const>);
static_assert(std::is_same_v<decltype(&AnnotationImpl::write), std::ostream& (AnnotationImpl::*)(std::ostream&) const>);
static_assert(
    std::is_same_v<decltype(&SingleFrequencyAnnotation::setFrequency), void (SingleFrequencyAnnotation::*)(int)>);
static_assert(
    std::is_same_v<decltype(&SingleFrequencyAnnotation::getFrequency), int (SingleFrequencyAnnotation::*)() const>);
static_assert(std::is_same_v<decltype(&AmplitudeModulatedAnnotation::setCarrierFreq),
                             void (AmplitudeModulatedAnnotation::*)(unsigned)>);
static_assert(std::is_same_v<decltype(&AmplitudeModulatedAnnotation::getModulatedFreq),
                             unsigned (AmplitudeModulatedAnnotation::*)() const>);

// Every clone is of its own type, and still the clone of the root.
static_assert(std::is_same_v<decltype(&AnnotationImpl::clone), AnnotationImpl* (AnnotationImpl::*)() const>);
static_assert(std::is_same_v<decltype(&SingleFrequencyAnnotationImpl::clone),
                             SingleFrequencyAnnotationImpl* (SingleFrequencyAnnotationImpl::*)() const>);
static_assert(std::is_same_v<decltype(&AmplitudeModulatedAnnotationImpl::clone),
                             AmplitudeModulatedAnnotationImpl* (AmplitudeModulatedAnnotationImpl::*)() const>);
static_assert(std::is_same_v<decltype(&Annotation::clone), Cloneable* (Cloneable::*)() const>);

TEST(InterfaceShape, AnnotationKeepsTheOrderOfItsOperations) {
    const std::ptrdiff_t first = slotOf(&Annotation::getLabel);
    EXPECT_EQ(slotOf(&Annotation::setLabel) - first, 1);
    EXPECT_EQ(slotOf(&Annotation::getStartTime) - first, 2);
    EXPECT_EQ(slotOf(&Annotation::setStartTime) - first, 3);
    EXPECT_EQ(slotOf(&Annotation::getStopTime) - first, 4);
    EXPECT_EQ(slotOf(&Annotation::setStopTime) - first, 5);
    EXPECT_EQ(slotOf(&Annotation::isEqual) - first, 6);
    EXPECT_EQ(slotOf(&AnnotationPrototype::getTypeName) - slotOf(&AnnotationPrototype::getRegex), 1);
}

TEST(InterfaceShape, TonesKeepTheOrderOfTheirOperations) {
    EXPECT_EQ(slotOf(&SingleFrequencyAnnotation::getFrequency) - slotOf(&SingleFrequencyAnnotation::setFrequency), 1);
    const std::ptrdiff_t first = slotOf(&AmplitudeModulatedAnnotation::setCarrierFreq);
    EXPECT_EQ(slotOf(&AmplitudeModulatedAnnotation::getCarrierFreq) - first, 1);
    EXPECT_EQ(slotOf(&AmplitudeModulatedAnnotation::setModulatedFreq) - first, 2);
    EXPECT_EQ(slotOf(&AmplitudeModulatedAnnotation::getModulatedFreq) - first, 3);
}

// --- builder ---

static_assert(isCopyable<AnnotationBuilder> && std::is_default_constructible_v<AnnotationBuilder> &&
              hasNo<AnnotationBuilder, Cloneable>);
static_assert(std::is_same_v<decltype(&AnnotationBuilder::getInstance), AnnotationBuilder& (*)()>);
static_assert(
    std::is_same_v<decltype(&AnnotationBuilder::registerPrototype), bool (AnnotationBuilder::*)(const Annotation&)>);
static_assert(std::is_same_v<decltype(&AnnotationBuilder::getNewAnnotation),
                             Annotation* (AnnotationBuilder::*)(const char*) const>);

TEST(InterfaceShape, AToneIsOneAnnotationWhicheverBaseLeadsThere) {
    AmplitudeModulatedAnnotationImpl tone;
    Annotation* const pDirect = &tone;
    AmplitudeModulatedAnnotation* const pInterface = &tone;
    AnnotationImpl* const pBase = &tone;
    EXPECT_EQ(static_cast<Annotation*>(pInterface), pDirect);
    EXPECT_EQ(static_cast<Annotation*>(pBase), pDirect);
    EXPECT_EQ(dynamic_cast<void*>(pDirect), static_cast<void*>(&tone));
    EXPECT_EQ(dynamic_cast<AmplitudeModulatedAnnotation*>(pDirect), pInterface);
}

}  // namespace

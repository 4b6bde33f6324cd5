#pragma once

/// The whole public interface of murvane-audio.
///
/// Operations tell of failure by their result: false, null, or a stream's fail bit. Unless one says otherwise, the only
/// exceptions that leave the library are
/// - `std::bad_alloc`, and `std::length_error` for a size that no vector can have;
/// - those of other code that it runs for the program: a strategy, function or feature of the program's own, a stream
///   that was told to throw, a Boost archive, an appender of the log.
/// Nothing is leaked then. The object at work may be destroyed, assigned to, or begun anew: opened, configured or
/// reset. What it holds until then, and what stands in its outputs, is unspecified.

#include <murvane/audio/annotations/AnnotationBuilder.h>
#include <murvane/audio/annotations/AudioAmplitudeModulatedAnnotation.h>
#include <murvane/audio/annotations/AudioAnnotatedFile.h>
#include <murvane/audio/annotations/AudioAnnotation.h>
#include <murvane/audio/annotations/AudioSingleFrequencyAnnotation.h>
#include <murvane/audio/batch/AudioFileEvaluator.h>
#include <murvane/audio/batch/AudioSetApplicationHelper.h>
#include <murvane/audio/batch/AudioSetParser.h>
#include <murvane/audio/computation/AudioExpressionFunctions.h>
#include <murvane/audio/computation/AudioFeatureComputerImpl.h>
#include <murvane/audio/features/AudioFeatureFactory.h>
#include <murvane/audio/features/AudioFeatureImpl.h>
#include <murvane/audio/features/EnergyFeatures.h>
#include <murvane/audio/features/HarmonicProductFeatures.h>
#include <murvane/audio/features/LowFreqEnergyRatioFeatures.h>
#include <murvane/audio/features/NeighbourhoodFeatures.h>
#include <murvane/audio/features/PeakFeatures.h>
#include <murvane/audio/features/SilenceRatioFeatures.h>
#include <murvane/audio/features/SpectralRangeFeatures.h>
#include <murvane/audio/features/SpectralShapeFeatures.h>
#include <murvane/audio/features/SpectrumFeatures.h>
#include <murvane/audio/features/ZeroCrossingFeatures.h>
#include <murvane/audio/input/AudioFileReader.h>
#include <murvane/audio/input/AudioLinearWindower.h>
#include <murvane/audio/input/AudioSignalWindow.h>
#include <murvane/audio/input/AudioSink.h>
#include <murvane/audio/input/AudioWindowedFileReader.h>
#include <murvane/audio/input/SampleQueue.h>
#include <murvane/audio/input/TimeSource.h>
#include <murvane/core/Assertion.h>
#include <murvane/core/BoostRegex.h>
#include <murvane/core/CloneableObjPtr.h>
#include <murvane/core/Export.h>
#include <murvane/core/Fallible.h>
#include <murvane/core/FileReplacement.h>
#include <murvane/core/FileReplacementBuffer.h>
#include <murvane/core/FileStamp.h>
#include <murvane/core/LimitedObjPtr.h>
#include <murvane/core/Logging.h>
#include <murvane/core/MemAccount.h>
#include <murvane/core/OS.h>
#include <murvane/core/Object.h>
#include <murvane/core/RefCountedObjPtr.h>
#include <murvane/core/SingletonRegistry.h>
#include <murvane/core/StringVector.h>
#include <murvane/core/Text.h>
#include <murvane/iff/ByteCursor.h>
#include <murvane/iff/Chunk.h>
#include <murvane/iff/ChunkId.h>
#include <murvane/iff/ChunkPos.h>
#include <murvane/iff/Finding.h>
#include <murvane/iff/IFFParser.h>
#include <murvane/iff/ReadLimits.h>
#include <murvane/iff/SharedBytes.h>
#include <murvane/iff/WavChunks.h>
#include <murvane/infra/ParameterTrie.h>
#include <murvane/infra/ROConfiguration.h>
#include <murvane/math/BasicFeatures.h>
#include <murvane/math/DoubleVector.h>
#include <murvane/math/MathFeatureComputerImpl.h>
#include <murvane/math/MathFourierTransform.h>
#include <murvane/math/MathSignalFeatureFactory.h>
#include <murvane/math/PowerOfTwoTransform.h>
#include <murvane/math/RangeFeature.h>
#include <murvane/math/SignalFeature.h>
#include <murvane/math/SignalFeatureComposed.h>
#include <murvane/math/SignalFeatureFactory.h>
#include <murvane/math/SignalFeaturePool.h>
#include <murvane/mathxpr/ExpressionList.h>
#include <murvane/mathxpr/FormulaError.h>
#include <murvane/mathxpr/FormulaParser.h>
#include <murvane/mathxpr/FormulaPrinter.h>
#include <murvane/mathxpr/FunctionAdaptor.h>
#include <murvane/mathxpr/FunctionBaseImpl.h>
#include <murvane/mathxpr/FunctionParameter.h>
#include <murvane/mathxpr/Registry.h>
#include <murvane/mathxpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <murvane/mathxpr/SyntaxTree.h>
#include <murvane/mathxpr/UserFunctionImpl.h>
#include <murvane/mathxpr/VectorArithmetic.h>

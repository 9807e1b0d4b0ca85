// SPDX-License-Identifier: MIT

// AVFoundation with its audio engine, as far as the adapters use it.
#include "platform/macos/fakes/Calls.h"
#include "platform/macos/fakes/FakeFoundation.h"
#include "platform/macos/fakes/FakeObjects.h"

#include <AVFoundation/AVFoundation.h>
#include <Block.h>
#include <mach/mach_time.h>

#include <chrono>

using namespace parlivo;

NSString* const AVMediaTypeAudio = @"soun";
NSString* const AVAudioEngineConfigurationChangeNotification =
    @"AVAudioEngineConfigurationChangeNotification";

namespace {

using TapBlock = void (^)(AVAudioPCMBuffer*, AVAudioTime*);
using ObserverBlock = void (^)(NSNotification*);

TapBlock tap = nullptr;
ObserverBlock observer = nullptr;
id observed = nil;

/// The buffer that is being delivered.
struct Delivery {
    std::vector<const float*> channels;
    std::size_t frames = 0;
    std::size_t stride = 1;
    std::optional<std::uint64_t> hostTime;
};
Delivery delivery;

template <typename Object>
Object* alone() {
    static Object* const object = [[Object alloc] init];
    return object;
}

}  // namespace

namespace parlivo::mac {

bool deliverBuffer(const std::vector<std::vector<float>>& channels, std::optional<std::uint64_t> hostTime,
                   std::size_t stride) {
    if (tap == nullptr || !world().running) return false;
    delivery = {{}, channels.empty() ? 0 : channels.front().size() / stride, stride, hostTime};
    for (const auto& samples : channels) delivery.channels.push_back(samples.data());
    tap(alone<AVAudioPCMBuffer>(), alone<AVAudioTime>());
    return true;
}

void changeConfiguration() {
    world().running = false;
    if (observer != nullptr) observer(alone<NSNotification>());
}

std::uint64_t hostNow() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

}  // namespace parlivo::mac

std::uint64_t mach_absolute_time() {
    return mac::hostNow();
}

@implementation NSNotification
@end

@implementation NSOperationQueue
@end

@implementation NSNotificationCenter
+ (NSNotificationCenter*)defaultCenter {
    return alone<NSNotificationCenter>();
}
- (id<NSObject>)addObserverForName:(NSString*)name
                            object:(id)obj
                             queue:(NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification*))block {
    mac::record(QStringLiteral("observe %1 of %2 on %3")
                    .arg(mac::textOf(name),
                         [obj isKindOfClass:[AVAudioEngine class]] ? QStringLiteral("the engine")
                                                                   : QStringLiteral("?"),
                         queue == nil ? QStringLiteral("the poster's thread") : QStringLiteral("a queue")));
    observer = Block_copy(block);
    observed = [[NSObject alloc] init];
    return observed;
}
- (void)removeObserver:(id)removed {
    mac::record(removed == observed ? QStringLiteral("observe no more")
                                    : QStringLiteral("remove a stranger"));
    if (observer != nullptr) Block_release(observer);
    observer = nullptr;
}
@end

@implementation AVCaptureDevice
+ (AVAuthorizationStatus)authorizationStatusForMediaType:(NSString*)mediaType {
    mac::record(QStringLiteral("status of %1").arg(mac::textOf(mediaType)));
    return static_cast<AVAuthorizationStatus>(mac::world().microphoneStatus);
}
+ (void)requestAccessForMediaType:(NSString*)mediaType completionHandler:(void (^)(BOOL))handler {
    mac::record(QStringLiteral("request %1").arg(mac::textOf(mediaType)));
    handler(mac::world().grantsMicrophone ? YES : NO);
}
@end

@implementation AVAudioFormat
- (double)sampleRate {
    return mac::world().sampleRate;
}
- (AVAudioChannelCount)channelCount {
    return mac::world().channels;
}
@end

@implementation AVAudioTime
+ (NSTimeInterval)secondsForHostTime:(std::uint64_t)hostTime {
    return static_cast<double>(hostTime) / 1e9;
}
- (BOOL)hostTimeValid {
    return delivery.hostTime ? YES : NO;
}
- (std::uint64_t)hostTime {
    return delivery.hostTime.value_or(0);
}
@end

@implementation AVAudioBuffer
@end

@implementation AVAudioPCMBuffer
- (AVAudioFrameCount)frameLength {
    return static_cast<AVAudioFrameCount>(delivery.frames);
}
- (void)setFrameLength:(AVAudioFrameCount)length {
    delivery.frames = length;
}
- (NSUInteger)stride {
    return delivery.stride;
}
- (float* const*)floatChannelData {
    return delivery.channels.empty() ? nullptr : const_cast<float* const*>(delivery.channels.data());
}
@end

@implementation AVAudioNode
- (AVAudioFormat*)outputFormatForBus:(AVAudioNodeBus)bus {
    mac::record(QStringLiteral("format of bus %1").arg(bus));
    return alone<AVAudioFormat>();
}
- (void)installTapOnBus:(AVAudioNodeBus)bus
             bufferSize:(AVAudioFrameCount)bufferSize
                 format:(AVAudioFormat*)format
                  block:(void (^)(AVAudioPCMBuffer*, AVAudioTime*))tapBlock {
    mac::record(
        QStringLiteral("tap bus %1 by %2 frames%3")
            .arg(bus)
            .arg(bufferSize)
            .arg(format == alone<AVAudioFormat>() ? QString() : QStringLiteral(" in another format")));
    tap = Block_copy(tapBlock);
    mac::world().tapped = true;
}
- (void)removeTapOnBus:(AVAudioNodeBus)bus {
    mac::record(QStringLiteral("remove the tap of bus %1").arg(bus));
    if (tap != nullptr) Block_release(tap);
    tap = nullptr;
    mac::world().tapped = false;
}
@end

@implementation AVAudioIONode
@end

@implementation AVAudioInputNode
@end

@implementation AVAudioEngine
- (AVAudioInputNode*)inputNode {
    return alone<AVAudioInputNode>();
}
- (BOOL)startAndReturnError:(NSError**)outError {
    mac::record(QStringLiteral("start"));
    mac::world().running = mac::world().engineStarts;
    if (!mac::world().engineStarts) *outError = mac::makeError();
    return mac::world().engineStarts ? YES : NO;
}
- (void)stop {
    mac::record(QStringLiteral("stop"));
    mac::world().running = false;
}
@end

// SPDX-License-Identifier: MIT

// Our own declarations of what the adapters use of this system interface, so that they can be compiled and called where
// the system is not at hand. tests/platform/macos/check-declarations compares them with published type lists.
#pragma once

#include <Foundation/Foundation.h>

typedef unsigned int AVAudioChannelCount;
typedef unsigned int AVAudioFrameCount;
typedef NSUInteger AVAudioNodeBus;

extern "C" {

extern NSString* const AVMediaTypeAudio;
extern NSString* const AVAudioEngineConfigurationChangeNotification;

}

NS_ENUM(NSInteger, AVAuthorizationStatus) {
    AVAuthorizationStatusNotDetermined = 0,
    AVAuthorizationStatusRestricted = 1,
    AVAuthorizationStatusDenied = 2,
    AVAuthorizationStatusAuthorized = 3,
};

@interface AVCaptureDevice : NSObject
+ (AVAuthorizationStatus)authorizationStatusForMediaType:(NSString*)mediaType;
+ (void)requestAccessForMediaType:(NSString*)mediaType completionHandler:(void (^)(BOOL granted))handler;
@end

@interface AVAudioFormat : NSObject
@property (readonly) double sampleRate;
@property (readonly) AVAudioChannelCount channelCount;
@end

@interface AVAudioTime : NSObject
+ (NSTimeInterval)secondsForHostTime:(std::uint64_t)hostTime;
@property (readonly) BOOL hostTimeValid;
@property (readonly) std::uint64_t hostTime;
@end

@interface AVAudioBuffer : NSObject
@end

@interface AVAudioPCMBuffer : AVAudioBuffer
@property AVAudioFrameCount frameLength;
@property (readonly) NSUInteger stride;
@property (readonly) float* const* floatChannelData;
@end

@interface AVAudioNode : NSObject
- (AVAudioFormat*)outputFormatForBus:(AVAudioNodeBus)bus;
- (void)installTapOnBus:(AVAudioNodeBus)bus bufferSize:(AVAudioFrameCount)bufferSize format:(AVAudioFormat*)format block:(void (^)(AVAudioPCMBuffer* buffer, AVAudioTime* when))tapBlock;
- (void)removeTapOnBus:(AVAudioNodeBus)bus;
@end

@interface AVAudioIONode : AVAudioNode
@end

@interface AVAudioInputNode : AVAudioIONode
@end

@interface AVAudioEngine : NSObject
@property (readonly) AVAudioInputNode* inputNode;
- (BOOL)startAndReturnError:(NSError**)outError;
- (void)stop;
@end

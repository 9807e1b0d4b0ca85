// SPDX-License-Identifier: MIT

// Our own declarations of what the adapters use of this system interface, so that they can be compiled and called where
// the system is not at hand. tests/platform/macos/check-declarations compares them with published type lists.
#pragma once

#include <Foundation/Foundation.h>

NS_ENUM(NSInteger, SMAppServiceStatus) {
    SMAppServiceStatusNotRegistered = 0,
    SMAppServiceStatusEnabled = 1,
    SMAppServiceStatusRequiresApproval = 2,
    SMAppServiceStatusNotFound = 3,
};

@interface SMAppService : NSObject
@property (class, readonly) SMAppService* mainAppService;
@property (readonly) SMAppServiceStatus status;
- (BOOL)registerAndReturnError:(NSError**)error;
- (BOOL)unregisterAndReturnError:(NSError**)error;
@end

// SPDX-License-Identifier: MIT

// Our own declarations of what the adapters use of this system interface, so that they can be compiled and called where
// the system is not at hand. tests/platform/macos/check-declarations compares them with published type lists.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double NSTimeInterval;
typedef double CGFloat;
typedef unsigned short unichar;
typedef signed char BOOL;
#define YES (static_cast<BOOL>(1))
#define NO (static_cast<BOOL>(0))
#define nil nullptr
#define NS_ENUM(type, name) CF_ENUM(type, name)
#define NS_OPTIONS(type, name) CF_OPTIONS(type, name)

struct CGPoint {
    CGFloat x;
    CGFloat y;
};

struct CGSize {
    CGFloat width;
    CGFloat height;
};

struct CGRect {
    CGPoint origin;
    CGSize size;
};

typedef CGRect NSRect;

@class NSString;

@protocol NSObject
@end

__attribute__((objc_root_class)) @interface NSObject <NSObject> {
    Class isa;
}
+ (instancetype)alloc;
+ (Class)class;
- (instancetype)init;
- (BOOL)isKindOfClass:(Class)aClass;
@end

@interface NSString : NSObject
+ (instancetype)stringWithCharacters:(const unichar*)characters length:(NSUInteger)length;
@property (readonly) NSUInteger length;
- (void)getCharacters:(unichar*)buffer;
@end

// What the compiler makes of @"text"; of no list.
@interface NSConstantString : NSString {
    const char* bytes_;
    unsigned int size_;
}
@end

@interface NSNumber : NSObject
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
+ (NSNumber*)numberWithDouble:(double)value;
@property (readonly) BOOL boolValue;
@property (readonly) long long longLongValue;
@property (readonly) double doubleValue;
@end

@interface NSDate : NSObject
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)secs;
@property (readonly) NSTimeInterval timeIntervalSince1970;
@end

@interface NSArray<ObjectType> : NSObject
@property (readonly) ObjectType firstObject;
@end

@interface NSError : NSObject
@property (readonly) NSInteger code;
@property (readonly) NSString* domain;
@property (readonly) NSString* localizedDescription;
@end

@interface NSURL : NSObject
+ (instancetype)URLWithString:(NSString*)URLString;
@end

@interface NSUserDefaults : NSObject
@property (class, readonly) NSUserDefaults* standardUserDefaults;
- (id)objectForKey:(NSString*)defaultName;
- (void)setObject:(id)value forKey:(NSString*)defaultName;
- (void)removeObjectForKey:(NSString*)defaultName;
@end

@interface NSBundle : NSObject
@property (class, readonly) NSBundle* mainBundle;
+ (NSBundle*)bundleWithPath:(NSString*)path;
@property (readonly) NSString* bundlePath;
- (NSString*)pathForResource:(NSString*)name ofType:(NSString*)ext;
- (id)objectForInfoDictionaryKey:(NSString*)key;
@end

@interface NSProcessInfo : NSObject
@property (class, readonly) NSProcessInfo* processInfo;
@property (readonly) NSString* operatingSystemVersionString;
@end

@interface NSNotification : NSObject
@end

@interface NSOperationQueue : NSObject
@end

@interface NSNotificationCenter : NSObject
@property (class, readonly) NSNotificationCenter* defaultCenter;
- (id<NSObject>)addObserverForName:(NSString*)name object:(id)obj queue:(NSOperationQueue*)queue usingBlock:(void (^)(NSNotification* notification))block;
- (void)removeObserver:(id)observer;
@end

NS_ENUM(NSUInteger, NSSearchPathDirectory) {
    NSLibraryDirectory = 5,
    NSApplicationSupportDirectory = 14,
};

NS_OPTIONS(NSUInteger, NSSearchPathDomainMask) {
    NSUserDomainMask = 1,
};

extern "C" {

NSArray<NSString*>* NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory, NSSearchPathDomainMask domainMask, BOOL expandTilde);
NSString* NSHomeDirectory(void);
NSString* NSTemporaryDirectory(void);

}

#import <Meridian/Meridian.h>

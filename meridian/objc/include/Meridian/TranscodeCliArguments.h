/**
 * \file
 * The settings of one transcode, read from and rendered as an argument vector. For example:
 *
 *     TranscodeCliArguments* arguments = [[TranscodeCliArguments alloc] initWithCliArgs:words
 *                                                             maintainOriginalOrdering:YES];
 *     if (!arguments.allFlagsAreValid) [self warnAbout:arguments.unknownFlags];
 *     arguments.shouldOverwrite = YES;
 *     task.arguments = arguments.commandLine;
 *
 * TranscodeProperties.h has the typed properties.
 */
#ifndef MERIDIAN_TRANSCODE_CLI_ARGUMENTS_H
#define MERIDIAN_TRANSCODE_CLI_ARGUMENTS_H

#import <Meridian/Constants.h>
#import <Meridian/Defines.h>

NS_ASSUME_NONNULL_BEGIN

/**
 * Stores the settings of one transcode. Flags are stored lower-cased and trimmed. Building never fails for what the
 * words say: unknown flags are kept aside and reported.
 *
 * A rendered vector begins with the flags in the order kept from the original vector, if that was requested. The
 * remainder follows in the order in which the store got its flags. A dictionary has no order: its flags are taken in
 * the order of their UTF-8 bytes, and so are those of an archive.
 *
 * A copy is independent, and equal until one of the two is changed. A store has no lock.
 */
@interface TranscodeCliArguments : NSObject <NSCopying, NSSecureCoding> {
 @private
  void* _store;
}

/**
 * The word by which an application starts itself in transcoding mode. It is not a flag of the vocabulary: a store
 * rejects it.
 */
MERIDIAN_CLASS_PROPERTY(NSString*, runInTranscodeModeFlag);
/** Every flag that a store knows. */
MERIDIAN_CLASS_PROPERTY(MERIDIAN_ARRAY(NSString*) *, allKnownCommandFlags);
/** The settings of the built-in presets. */
MERIDIAN_CLASS_PROPERTY(MERIDIAN_DICTIONARY(NSString*, NSString*) *, solvaneCloudPresetArguments);
MERIDIAN_CLASS_PROPERTY(MERIDIAN_DICTIONARY(NSString*, NSString*) *, solvaneProRes4444XQPresetArguments);

/** Makes an empty store. */
- (instancetype)init NS_DESIGNATED_INITIALIZER;
/** Reads an argument vector without keeping its order. */
- (instancetype)initWithCliArgs:(MERIDIAN_ARRAY(NSString*) *)cliArgs;
/**
 * Reads an argument vector, without a program path. A word that begins with "-" is a flag, and the word after it its
 * value unless that begins with "-" too. The last value of a repeated flag wins. A preset adds its settings where these
 * were not given.
 */
- (instancetype)initWithCliArgs:(MERIDIAN_ARRAY(NSString*) *)cliArgs
       maintainOriginalOrdering:(BOOL)maintainOriginalOrdering NS_DESIGNATED_INITIALIZER;
/** Checks and normalises the entries of a dictionary from flags to values, and expands its presets. */
- (instancetype)initWithArgumentLookup:(MERIDIAN_DICTIONARY(NSString*, NSString*) *)argumentLookup
    NS_DESIGNATED_INITIALIZER;

/**
 * Reads what -encodeWithCoder: wrote, under the keys "flagValueLookup", "invalidKeyValueLookup" and "orderedFlags", as
 * it is. An archive that holds something else there fails to decode: -[NSCoder failWithError:] is called where the
 * coder has it, and NSInvalidUnarchiveOperationException is raised elsewhere.
 */
- (instancetype MERIDIAN_NULLABLE)initWithCoder:(NSCoder*)coder;

/**
 * The valid entries, from flag to value; empty for a flag without one. Setting replaces all of them, as given; flags
 * that were stored before keep their places. The kept order and the rejected entries stay.
 */
@property(nonatomic, copy) MERIDIAN_DICTIONARY(NSString*, NSString*) * flagValueLookup;

/** Returns whether the flag is stored. Pass the flag in lower case, as the constants are. */
- (BOOL)hasArgumentFlag:(NSString*)flag;
/** Returns the flag's value, empty for a flag without one; nil if the trimmed flag is not stored. */
- (NSString* MERIDIAN_NULLABLE)argumentFlagValue:(NSString*)flag;
/** Stores the value under the trimmed flag as it is, neither normalised nor checked; nil removes the flag. */
- (void)setArgumentFlagValue:(NSString* MERIDIAN_NULLABLE)value forFlag:(NSString*)flag;

/** The flags of the rejected entries in the order of reading; nil if there are none. */
@property(nonatomic, readonly) MERIDIAN_ARRAY(NSString*) * MERIDIAN_NULLABLE unknownFlags;
/** Whether nothing was rejected. */
@property(nonatomic, readonly) BOOL allFlagsAreValid;
/** Calls the block with each rejected flag and its value. The block must not release the store. */
- (void)enumerateUnknownFlags:(MeridianEntryBlock)unknownFlagFound;
- (void)enumerateUnknownFlagsUsingFunction:(MeridianEntryFunction)unknownFlagFound
                                   context:(void* MERIDIAN_NULLABLE)context;

/**
 * The argument vector: the flags that are still stored in their kept order, then the remainder. Each flag and its
 * value, even an empty one, are two elements.
 */
@property(nonatomic, readonly) MERIDIAN_ARRAY(NSString*) * commandLine;
/** The same under the name that every argument store has. */
@property(nonatomic, readonly) MERIDIAN_ARRAY(NSString*) * commandLineArguments;
/** The words of the vector with nothing between them: a text to compare and log, not one for a shell. */
@property(nonatomic, readonly) NSString* cliString;

/** The paths of the input files, one group after the other; nil if there are none. Setting makes them group 0. */
@property(nonatomic, copy) MERIDIAN_ARRAY(NSString*) * MERIDIAN_NULLABLE inputFiles;
/** The paths of the input files by the number of their group, whole numbers; nil if there are none. */
@property(nonatomic, copy) MERIDIAN_DICTIONARY(NSNumber*, MERIDIAN_ARRAY(NSString*)*) *
    MERIDIAN_NULLABLE inputFileGroups;
/** The first of the input files; nil if there are none. */
@property(nonatomic, readonly) NSString* MERIDIAN_NULLABLE firstInputFile;
/** The audio tracks that are left out, from 0 and in ascending order; nil if there are none. */
@property(nonatomic, copy) MERIDIAN_ARRAY(NSNumber*) * MERIDIAN_NULLABLE ignoredAudioFileTracks;
/** `videoDimensions` as an NSValue of an NSSize. */
@property(nonatomic, readonly) NSValue* MERIDIAN_NULLABLE dimensionsSizeValue;
/**
 * Whether the source has to be analysed before the transcode can be planned: there is video, its size is set, and the
 * aspect scaling depends on the source's aspect ratio.
 */
@property(nonatomic, readonly) BOOL sourceFileAnalysisRequired;

/** Returns whether the command line asks the transcoder for this listing. */
- (BOOL)isCommandRequested:(SAVTranscodeCliCommand)command;
- (void)setCommand:(SAVTranscodeCliCommand)command requested:(BOOL)isRequested;

/** Copies all video, audio or timecode settings of another store, absent ones too. */
- (void)updateFromVideoDetail:(TranscodeCliArguments*)detail;
- (void)updateFromAudioDetail:(TranscodeCliArguments*)detail;
- (void)updateFromTimecodeDetail:(TranscodeCliArguments*)detail;

/** The names of all properties, in the order of the groups of flags. */
MERIDIAN_CLASS_PROPERTY(MERIDIAN_ARRAY(NSString*) *, propertyNames);
/** Returns the texts of which a property accepts one; empty for a property of another kind or an unknown name. */
+ (MERIDIAN_ARRAY(NSString*) *)allowedTextsOfProperty:(NSString*)name;
/** Returns a valid value of the property as text; nil for an unknown name. */
+ (NSString* MERIDIAN_NULLABLE)exampleOfProperty:(NSString*)name;
/** Returns the property as text, "true" or "false" for a switch; nil if it is absent or unknown. */
- (NSString* MERIDIAN_NULLABLE)textOfProperty:(NSString*)name;
/**
 * Sets the property to a person's input: surrounding blanks and, where one of a list of texts is accepted, letter case
 * are ignored, and a switch accepts "true", "false", "on", "off", "yes" and "no". The empty input removes it. Fails,
 * and changes nothing, with an error of MeridianPropertyErrorDomain for input that is not valid, for what no command
 * line can carry, and for an unknown name.
 */
- (BOOL)setText:(NSString*)input ofProperty:(NSString*)name error:(NSError* MERIDIAN_NULLABLE* MERIDIAN_NULLABLE)error;

@end

NS_ASSUME_NONNULL_END

#endif

// The two sections that close a settings pass: the tone operator block and the AOV channels.
#pragma once
#include "documents/settings_fields.h"
#include "scene/records.h"

#include <pugixml.hpp>

// Words of the tone operator by OperatorType, then the null end.
extern const char* const kToneOperatorWords[];

// Fills the block from ToneOperator under `root`. Without that element (or without a root)
// nothing changes at all; with it, every key is read, an absent Apply switch is 0, an absent
// curve leaves its slot alone, and an absent LUTPath is cleared.
void ReadToneOperator(pugi::xml_node root, ToneOperatorRecord* block);

// Reads AOV under `root`. The channels are what the document lists under AOV/Channels, each
// from its defaults, at most kAovChannelCount; NumChannels ends up as their number, whatever the
// document said. Without AOV or Channels, SaveAOV and NumChannels become 0.
void ReadAovSection(pugi::xml_node root, SettingsRecord* record, SettingsPass& pass);

// An id mask: attribute `value` as the whole mask, then each true attribute id1..id32, sky, glow
// and sun adds its bit (id i is bit i - 1; sky, glow and sun share bits 29..31 with ids 30..32).
// A missing element leaves the mask alone.
void ReadIdMask(pugi::xml_node parent, const char* key, uint32_t* mask);

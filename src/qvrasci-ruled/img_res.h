// The editor's built-in pictures, drawn at build time (tools/ruledimg); each is a picture
// resource of the given size in bytes.
#pragma once

// The About banner: 475 × 258, with its close mark at (451, 6).
extern const unsigned char kAboutBanner[];
extern const unsigned kAboutBannerSize;

// The main tool bar's New, Open, Save and About (24 × 24).
extern const unsigned char kToolNew[], kToolOpen[], kToolSave[], kToolAbout[];
extern const unsigned kToolNewSize, kToolOpenSize, kToolSaveSize, kToolAboutSize;

// The tree's root (18 × 18), container, passive and active definition (16 × 16).
extern const unsigned char kTreeRoot[], kTreeContainer[], kTreePassive[], kTreeActive[];
extern const unsigned kTreeRootSize, kTreeContainerSize, kTreePassiveSize, kTreeActiveSize;

// The rule bar's new definition (16 × 16), OK, Cancel, start and end rule (14 × 14).
extern const unsigned char kRuleType[], kRuleOk[], kRuleCancel[], kRuleStart[], kRuleEnd[];
extern const unsigned kRuleTypeSize, kRuleOkSize, kRuleCancelSize, kRuleStartSize, kRuleEndSize;

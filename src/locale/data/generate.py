#!/usr/bin/env python3
"""Writes the compiled-in locale tables: scripts.inc, languages.inc, territories.inc, language_rows.inc,
alias_targets.inc and locale_aliases.inc.

Run from anywhere:  python3 generate.py           (rewrites the six .inc files next to this script)
                    python3 generate.py --check   (also simulates locale-name resolution over the rows)

Inputs, needed only here and never by the build:
  /usr/share/i18n/SUPPORTED                        glibc's supported locales with their charsets
  /usr/share/unicode/cldr/common/supplemental/     CLDR supplementalData.xml, supplementalMetadata.xml,
                                                   likelySubtags.xml
  encodings.inc (next to this script)              the hand-written encoding table; a row's position
                                                   is the encoding id the language rows refer to
The locale aliases and their targets are fixed lists below, like the script, territory and
language codes.

The script, territory and language lists are fixed below; the library's other tables index into them,
so they change only by appending.

How the language rows are made, language by language in table order:

1. Usage rows from CLDR <languageData>: each element of the language gives a row with its scripts
   and territories, primary elements first, in file order.
   - A primary element naming scripts only takes the territories of the language's first secondary
     element (the form CLDR used before it moved the territories of languages official nowhere to
     the secondary element); that secondary element keeps a row only if it names scripts too.
   - A primary row with several scripts and territories is split per script: a territory goes to
     each script that CLDR <territoryInfo> records for the language there (a plain language code
     stands for the language's likely script); scripts left without territory are dropped. So zh
     gives Hans "CN HK MO SG" and Hant "HK MO TW", az gives Latn "AZ" and Cyrl "AZ".
   - A secondary element keeps only the scripts the language's primary elements name: the others
     (de Runr, fr Dupl, en Dsrt Shaw, hi Latn Mahj) are historic or minority scripts nobody selects
     a locale by. A row left without script keeps its territories, so de gives "BR DK KZ NL PL US".
   - Scripts missing from the script table are dropped, and a row left without script has none.
     Several scripts are one group entry of the script table; a set the table has no group for is
     split into one row per script.
   - A language CLDR knows only as an alias (tl, quz, prs, sh, swc, bhk) borrows the elements of its
     replacement, narrowed to the replacement's script and territory where it names them.

2. glibc locales. Every name in SUPPORTED of a listed language with a territory is a locale
   (language, territory, script), the script coming from a "@latin", "@cyrillic" or "@devanagari"
   modifier; other modifiers name variants of the same locale ("@euro" see below). Its encoding
   is the charset glibc gives the plain name, else its single legacy ".codeset" variant
   (ja_JP.EUC-JP), else UTF-8. Charsets missing from the encoding table (ARMSCII-8, GEORGIAN-PS,
   KOI8-T, PT154, RK1048) count as absent, which leaves UTF-8.
   - A locale joins the usage row of its language that lists its territory, preferring a row with
     the locale's script (the modifier's, else CLDR's likely script for language and territory),
     then primary rows, then table order; a locale with a modifier only joins a row of that script
     or of none. A row listing no territory takes the locales no other row lists, and their
     territories with them.
   - A plain locale whose territory also has script-modifier locales (az_AZ beside az_AZ@latin,
     sr_RS beside sr_RS@latin) picks no script: it joins no row, and only lends its encoding to
     the row of its likely script if no locale joined that one (be_BY CP1251 beside be_BY@latin).
   - A usage row takes the encoding most of its locales have; on a tie the one spoken by more
     people (<territoryInfo> population times the language's share). Locales of another encoding
     leave the row and form one row per encoding with the row's script. Territories no locale
     covers stay with the usage row, so ar "Arab" keeps the 26 territories of CLDR with ISO-8859-6,
     and zh Hant keeps MO with TW in Big5 while HK leaves in Big5-HKSCS.
   - Locales that joined no row form rows per (modifier script or none, encoding) after the usage
     rows.
   - Euro variants ("@euro", ".ISO-8859-15") whose charset differs from the locale's own give rows
     per (script of the row holding the locale, charset), merged into a row the previous step made
     for the same script and encoding. Other codeset variants (zh_CN.GBK, ru_RU.KOI8-R, the ".UTF-8"
     twins) give none: resolution never selects by codeset, and a row without encoding means UTF-8.

3. Territories that must resolve whatever the sources say: those of the alias targets
   (alias_targets.inc; the locale made from an alias re-validates its target, so ee_EE, ny_NO,
   tzm-Latn_DZ need a row) and the UN M.49 regions CLDR has locales for (ar_001, en_001, en_150,
   es_419, yi_001). Unless a row of the language with the target's script (else the likely one)
   lists it, an M.49 region gets a row of its own with the likely script and no encoding (en_029
   too), and a country joins the language's row of that script without encoding, primary rows
   first, else gets a row of its own.

4. Rows with neither territory nor encoding are dropped when the language has other rows: they
   only add a candidate to every lookup of the language. So are rows with neither script nor
   encoding that hold no glibc locale and whose territories other rows of the language list.

5. is_default is 1 on the owner of each territory that several rows of the language list (a row
   without territory lists every territory): the row holding the glibc locale of the plain name;
   with no glibc locale, a row already marked that lists it, else the row of CLDR's likely script,
   primary rows first. Lookup takes the last marked row among the candidates, so the marked rows
   are reordered (stably) to put each territory's owner after the other marked rows listing it.

6. Corrections for what the sources cannot say: EXTRA_LOCALES, USAGE_TERRITORIES and ROW_FIXES
   below, each with its reason.

Groups: a row's territories are stored as one string, codes in alphabetical order separated by one
blank; the territory table holds the single codes, then every group string the rows use
(alphabetical), then the UN M.49 codes. Run, the script prints the table's figures to stderr.
"""

import argparse
import collections
import os
import re
import sys
import xml.etree.ElementTree as ET

HERE = os.path.dirname(os.path.abspath(__file__))
SUPPORTED = "/usr/share/i18n/SUPPORTED"
CLDR = "/usr/share/unicode/cldr/common/supplemental"
CLDR_LOCALES = "/usr/share/unicode/cldr/common/main"

SCRIPTS = """
Aghb Arab Armn Bali Batk Beng Bopo Bugi Cans Cher Cyrl Deva Dsrt Dupl Elba Ethi Geor Gran Grek Guru
Hani Hans Hant Hebr Java Jpan Khmr Khoj Kore Laoo Latn Mahj Mend Modi Mong Mtei Mymr Olck Orya Osma
Perm Phag Rjng Runr Shaw Shrd Sidd Sind Sinh Sund Sylo Syrc Takr Taml Tfng Tglg Thaa Thai Tibt Tirh
Vaii Wara Arab+Cyrl Arab+Cyrl+Latn Arab+Deva Arab+Guru Arab+Latn Arab+Latn+Tfng Arab+Osma
Beng+Deva+Olck+Orya Bopo+Phag Cans+Latn Deva+Gran+Shrd+Sidd+Sinh Deva+Latn Dsrt+Shaw Khoj+Sind
Latn+Tfng Latn+Vaii
""".split()

TERRITORIES = """
AC AD AE AF AG AI AL AM AN AO AQ AR AS AT AU AW AX AZ BA BB BD BE BF BG BH BI BJ BL BM BN BO BQ BR BS
BT BV BW BY BZ CA CC CD CF CG CH CI CK CL CM CN CO CP CR CS CU CV CW CX CY CZ DE DG DJ DK DM DO DZ EA
EC EE EG EH ER ES ET FI FJ FK FM FO FR GA GB GD GE GF GG GH GI GL GM GN GP GQ GR GS GT GU GW GY HK HM
HN HR HT HU IC ID IE IL IM IN IO IQ IR IS IT JE JM JO JP KE KG KH KI KM KN KP KR KW KY KZ LA LB LC LI
LK LR LS LT LU LV LY MA MC MD ME MF MG MH MK ML MM MN MO MP MQ MR MS MT MU MV MW MX MY MZ NA NC NE NF
NG NI NL NO NP NR NU NZ OM PA PE PF PG PH PK PL PM PN PR PS PT PW PY QA RE RO RS RU RW SA SB SC SD SE
SG SH SI SJ SK SL SM SN SO SR SS ST SU SV SX SY SZ TA TC TD TF TG TH TJ TK TL TM TN TO TR TT TV TW TZ
UA UG UM US UY UZ VA VC VE VG VI VN VU WF WS XK YE YT YU ZA ZM ZW
""".split()

UN_M49 = ["001", "029", "150", "419"]

LANGUAGES = """
aa ab abr ace ach ady aeb af ak aln am an ar arn arq ary arz as ast av awa ay az ba bal ban bar bbc bci
be bej bem ber bew bg bgc bgn bhb bhi bhk bho bi bik bin bjj bjn bjt bm bn bo bqi br brh brx bs bsc
buc bug bum byn ca ce ceb cgg ch chk chr ckb co crh crs cs csb cv cy da dcc de dje doi dsb dv dyo dyu
dz ee efi el en es et eu fa fan ff ffm fi fil fj fo fon fr fud fuq fur fuv fy ga gaa gan gbm gbz gcr
gd gez gil gl glk gn gom gon gor gsw gu guz gv ha hak haw haz he hi hif hil hne hno ho hoc hoj hr hsb
hsn ht hu hy ibb id ig ii ik ikt ilo inh is it iu ja jam jml jv ka kab kam kbd kde kea kfy kg kha khn
ki kj kk kl kln km kmb kn knf ko koi kok kr krc kri kru ks ku kum kv kw kxm ky la lah laj lb lbe lez
lg li ljp lmn ln lo lrc lt lu lua luo luy luz lv mad mag mai mak man mdf mdh men mer mey mfa mfe mfv
mg mgh mh mi min mk ml mn mni moh mos mr ms mt mtr mwr my myv myx mzn na nan nb nd ndc nds ne new ng
ngl niu nl nn no nod noe nr nso ny nym nyn oc om or os pa pag pam pap pau pcm pl pon prs ps pt qu quc
quz raj rcf rej rif rkt rm rmt rn ro ru rw sa sah sas sat sav sc sck sco sd sdh se sef seh sg sh shi
shn shs si sid sk skr sl sm sma smj smn sms sn snf snk so sou sq sr srn srr ss st su suk sus sv sw swb
swc swv syl syr ta tcy te tem teo tet tg th ti tig tiv tk tkl tl tmh tn tnr to tpi tr ts tsg tt tts
tum tvl ty tyv tzm udm ug uk umb und unr ur uz vai ve vi vls vmf vmw wa wal war wbq wbr wls wni wo wtm
wuu xh xnr xog yi yo yue za zdj zgh zh zu zza
""".split()

# Script modifiers of glibc locale names.
# Locale aliases, key = target, in table order. A key becomes the tag key of the alias map.
ALIASES = """
C=en_US_POSIX he=he_IL POSIX=en_US_POSIX af=af_ZA am=am_ET ar=ar_EG cs=cs_CZ cs_CS=cs_CZ
cy=cy_GB cz=cs_CZ cz_CZ=cs_CZ da=da_DK de=de_DE ee=ee_EE el=el_GR en=en_US en_CB=en_029
en_UK=en_GB en_US_POSIX=en_US_POSIX es=es_ES et=et_EE eu=eu_ES fa=fa_IR fi=fi_FI fo=fo_FO
fr=fr_FR ga=ga_IE gd=gd_GB gl=gl_ES gu=gu_IN gv=gv_GB ha_NG=ha-Latn_NG hi=hi_IN hr=hr_HR
hu=hu_HU hy=hy_AM hy_AM_REVISED=hy_AM id=id_ID in=id_ID in_ID=id_ID is=is_IS it=it_IT
iu_CA=iu-Latn_CA iw=he_IL iw_IL=he_IL ja=ja_JP kk=kk_KZ kl=kl_GL kn=kn_IN ko=ko_KR kw=kw_GB
ky=ky_KG lt=lt_LT lv=lv_LV mi=mi_NZ mk=mk_MK ml=ml_IN mr=mr_IN ms=ms_MY mt=mt_MT nb=nb_NO
nl=nl_NL nn=nn_NO no=no_NO nr=nr_ZA nso=nso_ZA ny=ny_NO oc=oc_FR pa=pa_IN pl=pl_PL pt=pt_BR
qu_BO=quz_BO qu_EC=quz_EC qu_PE=quz_PE ro=ro_RO ru=ru_RU ru_SU=ru_RU rw=rw_RW se=se_NO
sh_HR=hr_HR si=si_LK sk=sk_SK sl=sl_SI sq=sq_AL sr-Cyrl=sr-Cyrl_BA sr-Latn=sr-Latn_BA ss=ss_ZA
st=st_ZA sv=sv_SE sw=sw_KE ta=ta_IN te=te_IN tg=tg-Cyrl_TJ tg_TJ=tg-Cyrl_TJ th=th_TH tk=tk_TM
tl=tl_PH tn=tn_ZA tr=tr_TR ts=ts_ZA tzm_DZ=tzm-Latn_DZ uk=uk_UA ur=ur_PK uz=uz_UZ ve=ve_ZA
vi=vi_VN wa=wa_BE xh=xh_ZA yi=yi_US zh-Hans=zh_CN zh-Hans-CN=zh_CN zh-Hant=zh_TW
zh-Hant-HK=zh_HK zh-Hant-MO=zh_MO zh-Hant-TW=zh_TW zu=zu_ZA
""".split()

# The canonical names the aliases lead to; rows refer to them by position.
ALIAS_TARGETS = """
af_ZA am_ET ar_EG cs_CZ cy_GB da_DK de_DE ee_EE el_GR en_029 en_GB en_US en_US_POSIX es_ES et_EE
eu_ES fa_IR fi_FI fo_FO fr_FR ga_IE gd_GB gl_ES gu_IN gv_GB ha-Latn_NG he_IL hi_IN hr_HR hu_HU
hy_AM id_ID is_IS it_IT iu-Latn_CA ja_JP kk_KZ kl_GL kn_IN ko_KR kw_GB ky_KG lt_LT lv_LV mi_NZ
mk_MK ml_IN mr_IN ms_MY mt_MT nb_NO nl_NL nn_NO no_NO nr_ZA nso_ZA ny_NO oc_FR pa_IN pl_PL pt_BR
quz_BO quz_EC quz_PE ro_RO ru_RU rw_RW se_NO si_LK sk_SK sl_SI sq_AL sr-Cyrl_BA sr-Latn_BA ss_ZA
st_ZA sv_SE sw_KE ta_IN te_IN tg-Cyrl_TJ th_TH tk_TM tl_PH tn_ZA tr_TR ts_ZA tzm-Latn_DZ uk_UA
ur_PK uz_UZ ve_ZA vi_VN wa_BE xh_ZA yi_US zh_CN zh_HK zh_MO zh_TW zu_ZA
""".split()

MODIFIER_SCRIPTS = {"latin": "Latn", "cyrillic": "Cyrl", "devanagari": "Deva"}

# Corrections the sources cannot give. Each entry names the language and why.
#
# EXTRA_LOCALES: locales fed in as if SUPPORTED listed them.
EXTRA_LOCALES = [
    # Azerbaijani had legacy charsets per script on older Unix systems; glibc now lists az_AZ in
    # UTF-8 only. With them the plain az_AZ names no script and becomes the default row of AZ.
    ("az_AZ@cyrillic", "ISO-8859-5"),
    ("az_AZ@latin", "ISO-8859-9"),
]

# USAGE_TERRITORIES: (language, element kind, CLDR territories) -> territories used instead.
USAGE_TERRITORIES = {
    # German as a secondary language: the library has always listed the communities of earlier
    # CLDR releases; the current list adds neighbours where German is a school language.
    ("de", "secondary", "BR CZ DK FI FR GB HU KZ NL PL SI SK US"): ["BR", "DK", "KZ", "NL", "PL", "US"],
}

# ROW_FIXES: (language, script or None, territories, encoding) of a generated row -> field changes.
# A value of None for "script" clears the script.
ROW_FIXES = {
    # Afar, as the library has always listed it: one UTF-8 row without script for all three
    # territories (the one aa_ER and aa_ET use), beside the Latin ISO-8859-1 row that is the
    # default of Djibouti. The sources give a Latin UTF-8 row for ET and a separate one for ER.
    ("aa", "Latn", "ET", "UTF-8"): {"script": None, "territories": ["DJ", "ER", "ET"]},
    ("aa", None, "ER", "UTF-8"): {"drop": True},
    # Zulu, as the library has always listed it: zu_ZA without a script.
    ("zu", "Latn", "ZA", "ISO-8859-1"): {"script": None},
}


def fail(message):
    print("generate.py: " + message, file=sys.stderr)
    sys.exit(1)


# ---------------------------------------------------------------------------------------------
# Inputs


def read_encodings():
    """Standard names in id order, and a map from normalised name or alias to id."""
    path = os.path.join(HERE, "encodings.inc")
    names, lookup = [], {}
    row = re.compile(r'^\s*\{"([^"]+)",\s*(?:"[^"]*"|nullptr),\s*\{(.*)\}\},\s*//\s*(\d+)\s*$')
    with open(path, encoding="utf-8") as f:
        for line in f:
            m = row.match(line)
            if not m:
                continue
            if int(m.group(3)) != len(names):
                fail("encodings.inc: id %s out of order" % m.group(3))
            names.append(m.group(1))
            for n in [m.group(1)] + re.findall(r'"([^"]+)"', m.group(2)):
                lookup.setdefault(norm_charset(n), len(names) - 1)
    if len(names) != 46:
        fail("encodings.inc: expected 46 rows, found %d" % len(names))
    return names, lookup


def norm_charset(name):
    return re.sub(r"[-_]", "", name).upper()


class Cldr:
    def __init__(self):
        data = ET.parse(os.path.join(CLDR, "supplementalData.xml")).getroot()
        self.elements = collections.defaultdict(list)
        for e in data.find("languageData"):
            self.elements[e.get("type")].append(e)
        # (language, territory) -> {script or None: speakers}
        self.usage = collections.defaultdict(dict)
        for ter in data.find("territoryInfo"):
            population = float(ter.get("population", "0"))
            for lp in ter.findall("languagePopulation"):
                lang, _, script = lp.get("type").partition("_")
                share = float(lp.get("populationPercent", "0")) / 100.0
                self.usage[(lang, ter.get("type"))][script or None] = population * share
        likely = ET.parse(os.path.join(CLDR, "likelySubtags.xml")).getroot()
        self.likely = {e.get("from"): e.get("to") for e in likely.iter("likelySubtag")}
        meta = ET.parse(os.path.join(CLDR, "supplementalMetadata.xml")).getroot()
        self.alias = {e.get("type"): e.get("replacement") for e in meta.iter("languageAlias")}

    def likely_script(self, lang, territory=None):
        for key in ([lang + "_" + territory] if territory else []) + [lang]:
            to = self.likely.get(key)
            if to:
                parts = to.split("_")
                if len(parts) == 3:
                    return parts[1]
        return None

    def scripts_in(self, lang, territory):
        """Scripts CLDR records for the language in the territory, a plain code as its likely script."""
        found = set()
        for script in self.usage.get((lang, territory), {}):
            found.add(script or self.likely_script(lang))
        return found

    def speakers(self, lang, territory):
        return sum(self.usage.get((lang, territory), {}).values())


def read_alias_targets():
    """The canonical names the locale aliases lead to, in table order."""
    return list(ALIAS_TARGETS)


def read_alias_keys():
    """Alias source name, as a tag key, -> target."""
    return {key.lower().replace("_", "-"): target for key, target in (a.split("=") for a in ALIASES)}


def alias_rows():
    """One row per alias: full, language, script, territory, their three indices, variant, separator,
    target. A code the tables know is written as an index, a legacy code (cz, iw, UK, CB) as text;
    a key that is not language-first (C, POSIX) stays whole in `full`."""
    out = []
    for key, target in (a.split("=") for a in ALIASES):
        full = lang = script = territory = variant = ""
        li = si = ti = NONE
        separator = "-" if "-" in key else "_"
        parts = re.split("[-_]", key)
        if not re.fullmatch("[a-z]{2,3}", parts[0]):
            full = key
        else:
            lang, rest = parts[0], parts[1:]
            if rest and re.fullmatch("[A-Z][a-z]{3}", rest[0]):
                script = rest.pop(0)
            if rest and re.fullmatch("[A-Z]{2}", rest[0]):
                territory = rest.pop(0)
            variant = "".join(separator + p for p in rest)
            if lang in LANGUAGE_INDEX:
                li, lang = LANGUAGE_INDEX[lang], ""
            if script in SCRIPT_INDEX:
                si, script = SCRIPT_INDEX[script], ""
            if territory in TERRITORY_INDEX:
                ti, territory = TERRITORY_INDEX[territory], ""
        if target not in ALIAS_TARGETS:
            fail("alias %s leads to %s, which is not a target" % (key, target))
        out.append('    {"%s", "%s", "%s", "%s", %d, %d, %d, "%s", \'%s\', %d},  // %s = %s' % (
            full, lang, script, territory, li, si, ti, variant, separator, ALIAS_TARGETS.index(target),
            key, target))
    return out


def required_territories(cldr):
    """language -> [(script or None, territory)] that the rows must resolve, whatever the sources say.

    These are the territories of the alias targets and the UN M.49 regions of CLDR's locales.
    """
    required = collections.defaultdict(list)
    name_re = re.compile(r"^([a-z]{2,3})(?:-([A-Z][a-z]{3}))?_([A-Z]{2}|\d{3})$")
    for target in read_alias_targets():
        m = name_re.match(target)
        if m and m.group(1) in LANGUAGE_INDEX:
            required[m.group(1)].append((m.group(2), m.group(3)))
    for name in sorted(os.listdir(CLDR_LOCALES)):
        lang, _, region = name[:-len(".xml")].partition("_")
        if region in UN_M49 and lang in LANGUAGE_INDEX:
            required[lang].append((None, region))
    return required


def read_glibc(encoding_ids):
    """Locales per (language, territory, modifier script): default encoding and euro variant."""
    entries = collections.defaultdict(list)
    lines = []
    with open(SUPPORTED, encoding="utf-8") as f:
        for line in f:
            line = line.split("#", 1)[0].split()
            if len(line) == 2:
                lines.append(tuple(line))
    lines += EXTRA_LOCALES
    name_re = re.compile(r"^([a-z]{2,3})_([A-Z]{2}|\d{3})(?:\.([^@]+))?(?:@(.+))?$")
    for name, charset in lines:
        m = name_re.match(name)
        if not m or m.group(1) not in LANGUAGE_INDEX or m.group(2) not in TERRITORY_INDEX:
            continue
        lang, terr, codeset, modifier = m.groups()
        script = MODIFIER_SCRIPTS.get(modifier)
        euro = modifier == "euro" or (codeset or "").upper() == "ISO-8859-15"
        entries[(lang, terr, script)].append((codeset, charset, euro))
    utf8 = encoding_ids[norm_charset("UTF-8")]
    locales = {}
    for key, items in entries.items():
        def known(cs):
            return encoding_ids.get(norm_charset(cs))
        plain = [known(cs) for codeset, cs, euro in items if codeset is None and not euro]
        variants = {known(cs) for codeset, cs, euro in items
                    if codeset is not None and not euro and known(cs) not in (None, utf8)}
        if plain and plain[0] is not None:
            enc = plain[0]
        elif not plain and len(variants) == 1:
            enc = variants.pop()
        else:
            enc = utf8
        euro = [known(cs) for _, cs, euro in items if euro and known(cs) not in (None, enc)]
        locales[key] = {"encoding": enc, "euro": euro[0] if euro else None}
    # A plain name beside script-modifier names of the same territory does not pick a script.
    with_modifier = {(l, t) for (l, t, s) in locales if s}
    for (l, t, s), loc in locales.items():
        loc["neutral"] = s is None and (l, t) in with_modifier
    return locales


# ---------------------------------------------------------------------------------------------
# Rows


class Row:
    def __init__(self, lang, scripts, territories, kind):
        self.lang = lang
        self.scripts = tuple(sorted(set(scripts)))
        self.territories = list(territories)
        self.kind = kind            # "primary", "secondary", "split", "glibc", "euro"
        self.encoding = None
        self.default = False
        self.joined = {}            # territory -> encoding of the glibc locale that joined
        self.grow = []              # territories a row without territories takes from its locales
        self.holds = set()          # (territory, modifier script) of the glibc locales it holds
        self.owns = {}              # territories this row is the default for

    def script_key(self):
        return "+".join(self.scripts) if self.scripts else None

    def lists(self, territory):
        return not self.territories or territory in self.territories


def usage_rows(cldr, lang, scripts_known):
    """Rows from CLDR languageData, before glibc locales join them."""
    elements = [(("primary" if e.get("alt") is None else "secondary"),
                 e.get("scripts", "").split(), e.get("territories", "").split())
                for e in cldr.elements.get(lang, [])]
    borrowed = False
    if not elements and lang in cldr.alias:
        target = cldr.alias[lang].split()[0].split("_")
        elements = [(k, s, t) for k, s, t in (
            (("primary" if e.get("alt") is None else "secondary"),
             e.get("scripts", "").split(), e.get("territories", "").split())
            for e in cldr.elements.get(target[0], []))]
        narrow_script = next((p for p in target[1:] if len(p) == 4), None)
        narrow_terr = next((p for p in target[1:] if len(p) in (2, 3)), None)
        narrowed = []
        for kind, s, t in elements:
            if narrow_script:
                if s and narrow_script not in s:
                    continue
                s = [narrow_script]
            if narrow_terr:
                if t and narrow_terr not in t:
                    continue
                t = [narrow_terr]
            narrowed.append((kind, s, t))
        elements = narrowed
        borrowed = True
    if not elements:
        to = cldr.likely.get(lang, "").split("_")
        if len(to) == 3 and to[2] in TERRITORY_INDEX:
            elements = [("primary", [to[1]], [to[2]])]

    # The old CLDR form: primary scripts with the secondary territories.
    bare_primary = [i for i, (k, s, t) in enumerate(elements) if k == "primary" and s and not t]
    secondary = [i for i, (k, s, t) in enumerate(elements) if k == "secondary" and t]
    if bare_primary and secondary:
        p, s_ = bare_primary[0], secondary[0]
        elements[p] = ("primary", elements[p][1], elements[s_][2])
        if any(x in scripts_known for x in elements[s_][1]):
            elements[s_] = ("secondary", [x for x in elements[s_][1] if x in scripts_known],
                            elements[s_][2])
        else:
            del elements[s_]

    primary_scripts = {x for k, s, t in elements if k == "primary" for x in s}
    rows = []
    for kind, scripts, territories in elements:
        territories = [t for t in territories if t in TERRITORY_INDEX]
        scripts = [s for s in scripts if s in scripts_known]
        if kind == "secondary" and primary_scripts:
            scripts = [s for s in scripts if s in primary_scripts]
        if kind == "primary" and len(scripts) > 1 and territories and not borrowed:
            per_script = collections.OrderedDict((s, []) for s in scripts)
            likely = cldr.likely_script(lang)
            for t in territories:
                used = cldr.scripts_in(lang, t) & set(scripts)
                if not used and likely in per_script:
                    used = {likely}
                for s in used:
                    per_script[s].append(t)
            parts = [(s, ts) for s, ts in per_script.items() if ts]
            if len(parts) > 1 or (len(parts) == 1 and len(scripts) > 1):
                for s, ts in parts:
                    rows.append(Row(lang, [s], ts, kind))
                continue
        if len(scripts) > 1 and "+".join(sorted(scripts)) not in SCRIPT_INDEX:
            for s in scripts:
                rows.append(Row(lang, [s], territories, kind))
            continue
        rows.append(Row(lang, scripts, territories, kind))
    for fix_key, territories in USAGE_TERRITORIES.items():
        if fix_key[0] != lang:
            continue
        hit = [r for r in rows if r.kind == fix_key[1] and " ".join(sorted(r.territories)) == fix_key[2]]
        if len(hit) != 1:
            fail("correction %r matches %d rows" % (fix_key, len(hit)))
        hit[0].territories = list(territories)
    return rows


def build_language(cldr, lang, locales, names, required=()):
    rows = usage_rows(cldr, lang, {s for s in SCRIPTS if "+" not in s})
    mine = {(t, s): loc for (l, t, s), loc in locales.items() if l == lang}

    # Locales join usage rows.
    leftovers = []
    for (t, s), loc in sorted(mine.items(), key=lambda kv: (kv[0][0], kv[0][1] or "")):
        if loc["neutral"]:
            leftovers.append((t, s, loc))
            continue
        script = s or cldr.likely_script(lang, t)
        listing = [r for r in rows if t in r.territories]
        if not listing:
            listing = [r for r in rows if not r.territories]
        if s:
            listing = [r for r in listing if s in r.scripts] or \
                [r for r in listing if not r.scripts]
        if not listing:
            leftovers.append((t, s, loc))
            continue
        listing.sort(key=lambda r: (script not in r.scripts, r.kind != "primary", rows.index(r)))
        target = listing[0]
        if t in target.joined:
            leftovers.append((t, s, loc))
            continue
        target.joined[t] = loc["encoding"]
        target.holds.add((t, s))
        if not target.territories:
            target.grow.append(t)

    # A plain locale that picks no script still lends its encoding to the row of its likely script
    # when no locale of that script joined it (be_BY CP1251 beside be_BY@latin).
    for t, s, loc in leftovers:
        if loc["neutral"]:
            script = cldr.likely_script(lang, t)
            for r in rows:
                if t in r.territories and script in r.scripts and not r.joined:
                    r.joined[t] = loc["encoding"]

    # Each usage row takes its majority encoding; other encodings split off.
    out = []
    for row in rows:
        if row.grow:
            row.territories = row.territories + row.grow
        by_enc = collections.defaultdict(list)
        for t, enc in row.joined.items():
            by_enc[enc].append(t)
        if not by_enc:
            out.append(row)
            continue
        ranked = sorted(by_enc.items(), key=lambda kv: (
            -len(kv[1]), -sum(cldr.speakers(lang, t) for t in kv[1]), kv[0]))
        row.encoding = ranked[0][0]
        out.append(row)
        for enc, ts in ranked[1:]:
            row.territories = [t for t in row.territories if t not in ts]
            split = Row(lang, row.scripts, sorted(ts), "split")
            split.encoding = enc
            split.joined = {t: enc for t in ts}
            split.holds = {h for h in row.holds if h[0] in ts}
            row.holds -= split.holds
            out.append(split)
    rows = out

    def merge_into(script_key, enc, territories, kind):
        for r in rows:
            if r.kind in ("glibc", "euro") and r.script_key() == script_key and r.encoding == enc:
                for t in territories:
                    if t not in r.territories:
                        r.territories.append(t)
                return r
        r = Row(lang, script_key.split("+") if script_key else [], sorted(territories), kind)
        r.encoding = enc
        rows.append(r)
        return r

    groups = collections.OrderedDict()
    for t, s, loc in leftovers:
        groups.setdefault((s, loc["encoding"]), []).append(t)
    for (s, enc), ts in groups.items():
        r = merge_into(s, enc, ts, "glibc")
        for t in ts:
            r.joined[t] = enc
            r.holds.add((t, s))

    euro = collections.OrderedDict()
    for (t, s), loc in sorted(mine.items(), key=lambda kv: (kv[0][0], kv[0][1] or "")):
        if loc["euro"] is not None:
            holder = next((r for r in rows if (t, s) in r.holds), None)
            euro.setdefault((holder.script_key() if holder else s, loc["euro"]), []).append(t)
    for (script_key, enc), ts in euro.items():
        merge_into(script_key, enc, ts, "euro")

    # Territories that must resolve although no row lists them: an M.49 region gets a row of its
    # own, any other territory joins the language's row of its script that has no encoding.
    for script, t in required:
        script = script or cldr.likely_script(lang, t if t in TERRITORY_INDEX else None)
        if any(t in r.territories and (script is None or script in r.scripts or not r.scripts)
               for r in rows):
            continue
        hosts = [r for r in rows if r.territories and r.encoding is None and script in r.scripts]
        hosts.sort(key=lambda r: (r.kind != "primary", rows.index(r)))
        if t in TERRITORY_INDEX and hosts:
            hosts[0].territories.append(t)
        else:
            rows.append(Row(lang, [script] if script else [], [t], "region"))

    if len(rows) > 1:
        rows = [r for r in rows if r.territories or r.encoding is not None] or rows[:1]
    for r in list(rows):
        if not r.scripts and r.encoding is None and not r.holds and len(rows) > 1 and all(
                any(t in o.territories for o in rows if o is not r) for t in r.territories):
            rows.remove(r)
    for r in rows:
        r.territories = sorted(set(r.territories))

    apply_row_fixes(lang, rows, names)
    set_defaults(cldr, lang, rows, mine)
    return rows


def apply_row_fixes(lang, rows, names):
    for key, change in ROW_FIXES.items():
        if key[0] != lang:
            continue
        hit = [r for r in rows if r.script_key() == key[1] and " ".join(r.territories) == key[2]
               and r.encoding == names.index(key[3])]
        if len(hit) != 1:
            fail("correction %r matches %d rows" % (key, len(hit)))
        row = hit[0]
        if change.get("drop"):
            rows.remove(row)
            continue
        if "script" in change:
            row.scripts = tuple(change["script"].split("+")) if change["script"] else ()
        if "territories" in change:
            row.territories = sorted(change["territories"])


def set_defaults(cldr, lang, rows, mine):
    """Marks the owner of each territory that several rows list, then orders the default rows.

    The library takes the last default row among the rows listing a territory, so an owner must
    follow every other default row that lists its territory.
    """
    shared = [t for t in sorted({t for r in rows for t in r.territories})
              if sum(1 for r in rows if r.lists(t)) > 1]
    owner = {}
    # Territories with a glibc locale belong to the row holding the locale's plain name.
    for t in shared:
        keys = sorted((s for (tt, s) in mine if tt == t), key=lambda s: (s is not None, s or ""))
        for s in keys:
            holder = [r for r in rows if (t, s) in r.holds and t in r.territories]
            if holder:
                owner[t] = holder[0]
                break
    for r in owner.values():
        r.default = True
    # The others go to a row already marked, else to the row of the likely script.
    for t in shared:
        if t in owner:
            continue
        listing = [r for r in rows if r.lists(t)]
        script = cldr.likely_script(lang, t)
        ranked = sorted(listing, key=lambda r: (
            not r.default, t not in r.territories, script not in r.scripts, r.kind == "euro",
            r.kind not in ("primary", "split"), listing.index(r)))
        owner[t] = ranked[0]
        ranked[0].default = True
    for t, r in owner.items():
        r.owns[t] = True
    # Stable topological order: every other default row listing t precedes owner[t].
    before = {id(r): set() for r in rows}
    for t, o in owner.items():
        for r in rows:
            if r is not o and r.default and r.lists(t):
                before[id(o)].add(id(r))
    ordered, placed = [], set()
    while len(ordered) < len(rows):
        ready = [r for r in rows if id(r) not in placed and before[id(r)] <= placed]
        if not ready:
            fail("%s: default rows cannot be ordered" % lang)
        ordered.append(ready[0])
        placed.add(id(ready[0]))
    rows[:] = ordered


# ---------------------------------------------------------------------------------------------
# Output


SCRIPT_INDEX = {s: i for i, s in enumerate(SCRIPTS)}
LANGUAGE_INDEX = {l: i for i, l in enumerate(LANGUAGES)}
TERRITORY_INDEX = {t: i for i, t in enumerate(TERRITORIES)}
NONE = 65535


def build_all():
    if len(SCRIPTS) != 78 or len(TERRITORIES) != 260 or len(LANGUAGES) != 410:
        fail("fixed lists have the wrong length")
    if sorted(LANGUAGES) != LANGUAGES or sorted(TERRITORIES) != TERRITORIES:
        fail("fixed lists are out of order")
    names, encoding_ids = read_encodings()
    cldr = Cldr()
    locales = read_glibc(encoding_ids)
    required = required_territories(cldr)
    rows = []
    for lang in LANGUAGES:
        rows += build_language(cldr, lang, locales, names, required.get(lang, ()))
    groups = sorted({" ".join(r.territories) for r in rows if len(r.territories) > 1})
    territories = TERRITORIES + groups + UN_M49
    return names, rows, territories, locales


def row_values(row, territory_index):
    script = SCRIPT_INDEX[row.script_key()] if row.scripts else NONE
    if not row.territories:
        terr = NONE
    else:
        terr = territory_index[" ".join(row.territories)]
    enc = NONE if row.encoding is None else row.encoding
    return [LANGUAGE_INDEX[row.lang], script, terr, enc, 1 if row.default else 0]


def describe(row, names):
    parts = [row.lang, " ".join(row.scripts) or "-", " ".join(row.territories) or "-",
             names[row.encoding] if row.encoding is not None else "-"]
    if row.default:
        parts.append("default")
    return " ".join(parts)


def write(name, header, lines):
    with open(os.path.join(HERE, name), "w", encoding="utf-8", newline="\n") as f:
        f.write("// " + header + " Generated by generate.py; do not edit by hand.\n")
        for line in lines:
            f.write(line + "\n")


def write_all(names, rows, territories):
    territory_index = {t: i for i, t in enumerate(territories)}
    write("scripts.inc", "Script codes: single codes, then groups of codes separated by blanks.",
          ['"%s",' % s.replace("+", " ") for s in SCRIPTS])
    write("languages.inc", "Language codes, in alphabetical order.",
          ['"%s",' % l for l in LANGUAGES])
    write("territories.inc",
          "Territory codes: single codes, groups separated by blanks, then UN M.49 areas.",
          ['"%s",' % t for t in territories])
    lines = []
    for row in rows:
        values = row_values(row, territory_index)
        lines.append("    %s,  // %s" % (", ".join(str(v) for v in values), describe(row, names)))
    write("language_rows.inc",
          "Language rows: language, script, territory, encoding, is_default (65535 = none).",
          lines)
    write("alias_targets.inc", "Canonical targets of the locale aliases.",
          ['    "%s",' % t for t in ALIAS_TARGETS])
    write("locale_aliases.inc",
          "Locale aliases: full, language, script, territory, language index, script index, territory "
          "index (65535 = none; an index replaces its text), variant, separator, target.",
          alias_rows())


def report(names, rows, territories):
    counts = collections.Counter(names[r.encoding] if r.encoding is not None else None for r in rows)
    groups = len(territories) - len(TERRITORIES) - len(UN_M49)
    print("rows %d (target 497)" % len(rows), file=sys.stderr)
    print("  without encoding %d (271), UTF-8 %d (67), ISO-8859-1 %d (58), ISO-8859-15 %d (39)" % (
        counts[None], counts["UTF-8"], counts["ISO-8859-1"], counts["ISO-8859-15"]), file=sys.stderr)
    print("  is_default %d (36)" % sum(r.default for r in rows), file=sys.stderr)
    print("territories %d (340): %d groups (76)" % (len(territories), groups), file=sys.stderr)

# ---------------------------------------------------------------------------------------------
# Self-check: the library's choice of a row for a locale name, run over the generated rows.


def resolve(rows_of, name):
    """(row, script, territory) the library would choose for a plain name, or None."""
    parts = re.split(r"[-_]", name)
    lang, script, territory = parts[0], "", ""
    for p in parts[1:]:
        if len(p) == 4:
            script = p
        elif len(p) == 2 or (len(p) == 3 and p.isdigit()):
            territory = p
    rows = rows_of.get(lang.lower(), [])
    q_script = script.lower()
    q_territory = territory.upper() if territory else lang.upper()
    if not script and not territory and len(rows) == 1 and \
            0 < len(" ".join(rows[0].territories)) < 4:
        return rows[0], "", rows[0].territories[0]
    default_row = last_row = None
    count = 0
    for r in rows:
        script_hit = False
        if q_script:
            if not r.scripts or q_script not in " ".join(r.scripts).lower():
                continue
            script_hit = True
        if q_territory and r.territories:
            if q_territory not in " ".join(r.territories):
                continue
            if script_hit:
                default_row, count, last_row = None, 1, r
                break
        if r.default:
            default_row = r
        count += 1
        last_row = r
    row = default_row or (last_row if count == 1 else None)
    if row is None:
        return None
    narrowed_script = ""
    if q_script and row.scripts:
        at = " ".join(row.scripts).lower().find(q_script)
        narrowed_script = " ".join(row.scripts)[at:at + 4]
    narrowed_territory = q_territory if row.territories and q_territory in " ".join(row.territories) \
        else ""
    return row, narrowed_script, narrowed_territory


def canonical(rows_of, name, aliases=None):
    if aliases and name.lower().replace("_", "-") in aliases:
        return aliases[name.lower().replace("_", "-")]
    found = resolve(rows_of, name)
    if not found:
        return ""
    row, script, territory = found
    return row.lang + ("-" + script if script else "") + ("_" + territory if territory else "")


def check(names, rows, locales):
    rows_of = collections.defaultdict(list)
    for r in rows:
        rows_of[r.lang].append(r)
    errors = []

    def expect(condition, message):
        if not condition:
            errors.append(message)

    telling = [
        ("aa", "Latn", "DJ", "ISO-8859-1", True),
        ("aa", "", "DJ ER ET", "UTF-8", False),
        ("am", "Ethi", "ET", "UTF-8", False),
        ("ar", "Arab", "AE BH DJ DZ EG EH ER IL IQ JO KM KW LB LY MA MR OM PS QA SA SD SO SY TD "
         "TN YE", "ISO-8859-6", False),
        ("ar", "", "IN", "UTF-8", False),
        ("az", "Cyrl", "AZ", "ISO-8859-5", False),
        ("az", "Latn", "AZ", "ISO-8859-9", False),
        ("az", "", "AZ", "UTF-8", True),
        ("zh", "Hans", "CN HK MO SG", "GB2312", False),
        ("zh", "Hant", "HK", "Big5-HKSCS", True),
        ("zh", "Hant", "MO TW", "Big5", True),
        ("zu", "", "ZA", "ISO-8859-1", False),
    ]
    for lang, script, terr, enc, default in telling:
        hit = [r for r in rows_of[lang] if " ".join(r.scripts) == script
               and " ".join(r.territories) == terr and r.encoding == names.index(enc)
               and r.default == default]
        expect(len(hit) == 1, "row %s %s %s %s %d missing" % (lang, script or "-", terr, enc, default))

    def encoding_of(name):
        found = resolve(rows_of, name)
        if not found:
            return None
        return names[found[0].encoding] if found[0].encoding is not None else "-"

    for bare, canon in [("de", "de_DE"), ("zu", "zu_ZA"), ("ja", "ja_JP")]:
        expect(canonical(rows_of, bare) == canon, "%s resolves to %r" % (bare, canonical(rows_of, bare)))
    for name, canon, enc in [
            ("zh_CN", "zh_CN", "GB2312"), ("zh_HK", "zh_HK", "Big5-HKSCS"), ("zh_TW", "zh_TW", "Big5"),
            ("zh_SG", "zh_SG", "GB2312"), ("zh_MO", "zh_MO", "Big5"), ("zh-Hant_HK", "zh-Hant_HK",
                                                                          "Big5-HKSCS"),
            ("ja_JP", "ja_JP", "EUC-JP"), ("de_DE", "de_DE", "ISO-8859-1"), ("de", "de_DE", "ISO-8859-1"),
            ("fr_FR", "fr_FR", "ISO-8859-1"), ("en_US", "en_US", "ISO-8859-1"),
            ("en_GB", "en_GB", "ISO-8859-1"), ("ru_RU", "ru_RU", "ISO-8859-5"),
            ("ko_KR", "ko_KR", "EUC-KR"), ("he_IL", "he_IL", "ISO-8859-8"),
            ("tr_TR", "tr_TR", "ISO-8859-9"), ("pt_BR", "pt_BR", "ISO-8859-1"),
            ("sr_RS", "sr_RS", "UTF-8"), ("ar_IN", "ar_IN", "UTF-8"), ("aa_ER", "aa_ER", "UTF-8"),
            ("aa_DJ", "aa_DJ", "ISO-8859-1"), ("az_AZ", "az_AZ", "UTF-8"),
            ("az-Cyrl_AZ", "az-Cyrl_AZ", "ISO-8859-5"), ("az-Latn_AZ", "az-Latn_AZ", "ISO-8859-9"),
            ("el_GR", "el_GR", "ISO-8859-7"), ("pl_PL", "pl_PL", "ISO-8859-2"),
            ("th_TH", "th_TH", "windows-874"), ("uk_UA", "uk_UA", "KOI8-U"),
            ("EN_us", "en_US", "ISO-8859-1"), ("zu_ZA", "zu_ZA", "ISO-8859-1")]:
        got = canonical(rows_of, name)
        expect(got == canon, "%s canonicalises to %r, not %r" % (name, got, canon))
        expect(encoding_of(name) == enc, "%s has encoding %r, not %r" % (name, encoding_of(name), enc))
    expect(canonical(rows_of, "xx_YY") == "", "xx_YY resolves")

    # A locale made from an alias re-validates its target, so every target must canonicalise to
    # itself.
    aliases = read_alias_keys()
    for target in read_alias_targets():
        got = canonical(rows_of, target, aliases)
        expect(got == target, "alias target %s canonicalises to %r" % (target, got))
    for key, target in sorted(aliases.items()):
        expect(canonical(rows_of, key, aliases) == target, "alias %s does not lead to %s" % (key, target))

    # Every glibc locale resolves to its own encoding; every listed territory resolves at all.
    utf8 = names.index("UTF-8")
    for (lang, terr, script), loc in sorted(locales.items(), key=lambda kv: (kv[0][0], kv[0][1],
                                                                             kv[0][2] or "")):
        name = lang + ("-" + script if script else "") + "_" + terr
        found = resolve(rows_of, name)
        want = loc["encoding"]
        got = found[0].encoding if found else "unresolved"
        if got is None:
            got = utf8
        expect(got == want, "locale %s: row encoding %s, glibc %s" % (
            name, names[got] if isinstance(got, int) else got, names[want]))
    for r in rows:
        for t, s in r.holds:
            if s is None and len(r.scripts) == 1 and t in r.territories:
                name = "%s-%s_%s" % (r.lang, r.scripts[0], t)
                found = resolve(rows_of, name)
                expect(found and found[0] is r, "%s resolves to %s, not %s" % (
                    name, describe(found[0], names) if found else "nothing", describe(r, names)))
        for t in r.territories:
            expect(canonical(rows_of, r.lang + "_" + t) != "", "%s_%s does not resolve" % (r.lang, t))
            if r.owns.get(t):
                found = resolve(rows_of, r.lang + "_" + t)
                expect(found and found[0] is r, "%s_%s resolves to %s, not %s" % (
                    r.lang, t, describe(found[0], names) if found else "nothing", describe(r, names)))
        if r.scripts and len(r.scripts) == 1:
            for t in r.territories or [""]:
                name = r.lang + "-" + r.scripts[0] + ("_" + t if t else "")
                expect(canonical(rows_of, name) != "", "%s does not resolve" % name)

    for e in errors:
        print("check: " + e, file=sys.stderr)
    print("check: %d problems" % len(errors), file=sys.stderr)
    return 1 if errors else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--check", action="store_true", help="simulate name resolution over the rows")
    args = parser.parse_args()
    names, rows, territories, locales = build_all()
    write_all(names, rows, territories)
    report(names, rows, territories)
    if args.check:
        sys.exit(check(names, rows, locales))


if __name__ == "__main__":
    main()

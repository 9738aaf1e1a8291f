// A script for each kind of drawing record, each word that draws, each style and each flag of a record.

export interface Case {
  name: string;
  script: string;
}

const up = 'C>REF(C,1)';
const turn = 'REF(C,1)<REF(C,2) AND C>REF(C,1)';
const peak = 'REF(C,1)>REF(C,2) AND C<REF(C,1)';

const line = 'MA5:MA(C,5)';
const lines: readonly string[] = [
  'COLORRED',
  'LINETHICK4,COLORBLUE,SOLIDLINE',
  'PRECIS1',
  ...['DASHLINE', 'DASH', 'DOTLINE', 'DOT', 'DASHDOT', 'POINTDOT', 'DASHDOTDOT'],
  ...['CROSSDOT', 'CIRCLEDOT'],
  'COLORLIGREY,NOTEXT',
  'NODRAW',
];
const colours: readonly string[] = [
  ...['AUTO', 'GREEN', 'MAGENTA', 'YELLOW', 'LIRED', 'LIGREEN', 'LIBLUE'],
  ...['BLACK', 'WHITE', 'CYAN', 'LIGRAY', 'GRAY', 'GREY', '4A1EB7'],
];

const styled = (styles: string): Case => ({ name: styles, script: `${line},${styles};` });

export const cases: readonly Case[] = [
  { name: 'bars', script: 'X:=C;' },
  { name: 'lines', script: 'A:MA(C,3);B:MA(C,5);D:MA(C,8);' },
  { name: 'a line with gaps', script: 'A:IF(MOD(BARPOS,5)=0,DRAWNULL,C);' },
  {
    name: 'levels',
    script: 'RSI:SMA(MAX(C-REF(C,1),0),6,1)/SMA(ABS(C-REF(C,1)),6,1)*100;HI:80;LO:20,DOT;',
  },
  { name: 'whole numbers', script: `UP:${up};` },
  { name: 'volume', script: 'VL:V;' },
  ...lines.map(styled),
  ...colours.map((colour) => styled(`COLOR${colour}`)),
  { name: 'VOLSTICK', script: 'VL:V,VOLSTICK;' },
  { name: 'VOLUMESTICK', script: 'VL:V,VOLUMESTICK;' },
  { name: 'STICK', script: 'D:C-O,STICK;' },
  { name: 'COLORSTICK', script: 'D:EMA(C,3)-EMA(C,8),COLORSTICK;' },
  { name: 'STICKLINE', script: `STICKLINE(${up},H,L,3,0),COLORBLUE;` },
  { name: 'STICKLINE hollow', script: `STICKLINE(${up},O,C,-1,1),COLORBLUE;` },
  { name: 'STICKLINE1', script: `STICKLINE1(${up},H,L,5,0),COLORGREEN,HOLLOW;` },
  { name: 'STICKLINE1 solid', script: `STICKLINE1(${up},H,L,5,1),COLORGREEN,SOLID;` },
  { name: 'DRAWCOLUMNCHART', script: 'G:=(C/REF(C,1)-1)*100;DRAWCOLUMNCHART(G,G>0,G<0);' },
  { name: 'DRAWBARLINE', script: 'DRAWBARLINE(H,O,L,C);' },
  { name: 'DRAWKLINE', script: 'DRAWKLINE(H-MA(C,5),O-MA(C,5),L-MA(C,5),C-MA(C,5));' },
  { name: 'DRAWKLINE1', script: 'DRAWKLINE1(H,O,L,C);' },
  { name: 'DRAWCOLORKLINE', script: `DRAWCOLORKLINE(${up},COLORMAGENTA,0);` },
  { name: 'DRAWCOLORKLINE hollow', script: `DRAWCOLORKLINE(${up},COLORMAGENTA,1);` },
  { name: 'DRAWLINE', script: `DRAWLINE(${up},H,${up},L,COLORRED);` },
  { name: 'DRAWLINE1', script: `DRAWLINE1(${turn},L,${peak},H,1),COLORBLUE,DASH;` },
  { name: 'DRAWLINE3', script: `DRAWLINE3(${turn},L,-1,${turn},H,2,0),COLORBLUE;` },
  { name: 'DRAWLASTBARLINE', script: 'DRAWLASTBARLINE(1,REF(C,9),9,1,C,0,1),COLORBLUE;' },
  { name: 'DRAWSL', script: `DRAWSL(${turn},L,4,5,0,COLORGRAY);` },
  { name: 'DRAWSL1', script: `DRAWSL1(${turn},L,4,5,2),COLORGRAY;` },
  { name: 'VERTLINE', script: `VERTLINE(${turn},COLORGRAY);` },
  { name: 'VERTLINE1', script: `VERTLINE1(${turn}),COLORGRAY,DOT;` },
  { name: 'POLYLINE', script: `POLYLINE(${turn},L,COLORBLUE);` },
  { name: 'POLYLINE1', script: `POLYLINE1(${turn},L),COLORBLUE;` },
  { name: 'PARTLINE', script: `PARTLINE(${up},MA(C,3),COLORCYAN);` },
  { name: 'PARTLINE1', script: `PARTLINE1(${up},MA(C,3)),COLORCYAN,DOTLINE;` },
  { name: 'DRAWCOLORLINE', script: `DRAWCOLORLINE(${up},MA(C,3),COLORRED,COLORGREEN);` },
  { name: 'DRAWGBK', script: 'DRAWGBK(1,COLORYELLOW,COLORLIBLUE,1);' },
  { name: 'DRAWGBK downwards', script: 'DRAWGBK(1,COLORYELLOW,COLORLIBLUE,0);' },
  { name: 'DRAWGBK1', script: `DRAWGBK1(${up},COLORGREEN);` },
  { name: 'FILLRGN', script: `FILLRGN(${up} OR REF(${up},1),H,L,COLORYELLOW);` },
  { name: 'FILLRGN1', script: 'FILLRGN1(1,MA(C,3),MA(C,8)),COLORBLUE;' },
  { name: 'BACKGROUNDSTYLE', script: 'R:(C/REF(C,1)-1)*100;BACKGROUNDSTYLE(-9);' },
  { name: 'RGB', script: `${line},RGB(120,40,200);` },
  { name: 'ANGLELINE', script: `ANGLELINE(${turn},L,${peak},H,1),COLORBLUE;` },
  { name: 'DRAWANGLELINE', script: `DRAWANGLELINE(${turn},L,${peak},H,0.5,COLORCYAN);` },
  { name: 'HORIZONTALLINE', script: `HORIZONTALLINE(${turn},C),COLORGRAY;` },
  { name: 'DRAWHORIZONTALLINE', script: `DRAWHORIZONTALLINE(${turn},C,COLORRED);` },
  { name: 'TRENDLINES', script: `TRENDLINES(${turn},L,REF(${turn},4),L),COLORBLUE;` },
  { name: 'DRAWTRENDLINE', script: `DRAWTRENDLINE(${peak},H,REF(${turn},4),L,COLORBLUE);` },
  { name: 'GOLDENLINE', script: `GOLDENLINE(${peak},H,${turn},L,1),COLORE07B1A,DOT;` },
  { name: 'DRAWGOLDENLINE', script: `DRAWGOLDENLINE(${peak},H,${turn},L,1,COLORE07B1A);` },
  { name: 'WAVERULER', script: `WAVERULER(${turn},L,${peak},H,REF(${peak},2),L,0.8),COLORRED;` },
  {
    name: 'DRAWWAVERULER',
    script: `DRAWWAVERULER(${turn},L,${peak},H,REF(${peak},2),L,0.8,COLORRED);`,
  },
  { name: 'DRAWTEXT', script: `DRAWTEXT(${turn},L,'up'),COLORRED,VALIGN0,FONTSIZE10;` },
  { name: 'DRAWTEXT above', script: `DRAWTEXT(${peak},H,'top'),COLORBLUE,VALIGN2,ALIGN2;` },
  { name: 'WORD', script: `X:=${turn};X,WORD(1,'up');` },
  { name: 'KTEXT', script: `KTEXT(${turn},10,L,1,COLORRED,'top');` },
  { name: 'DRAWNUMBER', script: `DRAWNUMBER(${turn},H,C,2,COLORRED),VALIGN2;` },
  { name: 'DRAWNUMBER1', script: `DRAWNUMBER1(${turn},L,C,1),COLORBLUE,VALIGN0;` },
  { name: 'DRAWSHIFTNUMBER', script: `DRAWSHIFTNUMBER(${turn},H,C,2,COLORRED,1,15);` },
  { name: 'DRAWICON', script: `DRAWICON(${turn},L,'ICO16'),VALIGN0;` },
  { name: 'DRAWICON by number', script: `DRAWICON(${peak},H,2),COLORBLUE,VALIGN2;` },
  { name: 'DRAWBMP', script: `DRAWBMP(${turn},L-30,'photo');` },
  { name: 'DRAWBKBMP', script: "DRAWBKBMP(1,'photo');" },
  { name: 'DRAWLASTBARTEXT', script: "DRAWLASTBARTEXT(H,'top'),COLORRED,VALIGN2;" },
  { name: 'DRAWLASTBARNUMBER', script: 'DRAWLASTBARNUMBER(L,C,2,COLORBLUE),VALIGN0;' },
  { name: 'DRAWLASTBARICON', script: "DRAWLASTBARICON(H,'ICO31'),VALIGN2;" },
  { name: 'NOTICE', script: `${turn},NOTICE('turn');` },
  { name: 'SOUND', script: `${turn},SOUND('A');` },
  { name: 'PLAYSOUND', script: `PLAYSOUND(${turn},'B');` },
  ...['BK', 'BP', 'SK', 'SP', 'BPK', 'SPK', 'CLOSEOUT'].map((word, i) => ({
    name: word,
    script: `${i % 2 ? peak : turn},${word}${i < 2 ? '(2)' : ''};`,
  })),
];

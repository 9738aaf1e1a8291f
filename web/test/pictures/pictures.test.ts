// Draws the pictures of docs/ anew.
import { resolve } from 'node:path';
import { test } from 'node:test';
import { Desk, startBrowser, Studio } from '../browser/support.ts';

const script = `// Averages that cross.
CONST FAST:8;
CONST SLOW:21;
QUICK:EMA(C,FAST),COLORBLUE,LINETHICK2;
MID:MA(C,SLOW),COLORE07B1A;
UP:=MID+2*STD(C,SLOW);
DN:=MID-2*STD(C,SLOW);
FILLRGN(1,UP,DN,COLORLIBLUE);
D:=C-REF(C,1);
RSI:SMA(MAX(D,0),6,1)/SMA(ABS(D),6,1)*100;
HIGH80:80,DOT,COLORGRAY;
LOW20:20,DOT,COLORGRAY;
DRAWTEXT(L=LLV(L,60),L,'low'),VALIGN0,FONTSIZE10;
CROSS(QUICK,MID),BK(1);
CROSS(MID,QUICK),SP(1);
MEAN:EMMA(C,5);
`;

for (const theme of ['light', 'dark']) {
  test(theme, async () => {
    const [studio, browser] = await Promise.all([Studio.start(), startBrowser()]);
    const desk = await Desk.open(browser, studio, '', theme);
    await desk.page.setViewport({ width: 1360, height: 800 });
    await desk.write(script.replace(/MEAN:.*\n/, ''));
    await desk.page.click('#tab-events');
    await desk.write(script);
    const plot = (await (await desk.page.$('.pane .u-over'))!.boundingBox())!;
    for (let i = 0; i < 3; ++i) {
      await desk.page.mouse.move(plot.x + plot.width - 10, plot.y + 50);
      await desk.page.mouse.wheel({ deltaY: -200 });
    }
    await desk.page.mouse.move(plot.x + plot.width * 0.62, plot.y + plot.height * 0.4);
    await desk.settled();
    await desk.page.screenshot({
      path: resolve(`../docs/studio-${theme}.png`),
      optimizeForSpeed: false,
    });
    await desk.close();
    await browser.close();
    await studio.stop();
  });
}
